# The real executable on the test desktop: it owns the player's name on the
# session bus and plays through the test sink.
plink_add_test(test_playerwindow_e2e SOURCES test_playerwindow_e2e.cpp playerfixture.h
    LIBS plinkcore plinkart Qt6::Widgets DISPLAY)
target_compile_definitions(test_playerwindow_e2e PRIVATE PLINK_EXECUTABLE="$<TARGET_FILE:plinkbox>")
add_dependencies(test_playerwindow_e2e plinkbox)
set_tests_properties(test_playerwindow_e2e PROPERTIES RESOURCE_LOCK "plinkbox-session-bus;plinkbox_sink")
# The interface in German (from the environment), French and English.
plink_add_test(test_translations SOURCES test_translations.cpp LIBS plinkapp)
# Every text in the sources has a finished translation in every .ts file: a
# copy of each is brought up to date with lupdate, as update_translations would.
add_test(NAME test_translations_complete COMMAND ${CMAKE_COMMAND}
    -DLUPDATE=$<TARGET_FILE:Qt6::lupdate> -DSOURCES=${PROJECT_BINARY_DIR}/translations/lupdate-sources.lst
    -DTS_DIR=${PROJECT_SOURCE_DIR}/translations -DWORK=${CMAKE_CURRENT_BINARY_DIR}/translations-check
    -P ${CMAKE_CURRENT_SOURCE_DIR}/checktranslations.cmake)
# The command line's parser, and the real executable driven from a shell.
plink_add_test(test_commandline SOURCES test_commandline.cpp playerfixture.h LIBS plinkapp)
target_compile_definitions(test_commandline PRIVATE PLINK_EXECUTABLE="$<TARGET_FILE:plinkbox>"
    PLINK_VERSION="${PROJECT_VERSION}")
add_dependencies(test_commandline plinkbox)
set_tests_properties(test_commandline PROPERTIES RESOURCE_LOCK "plinkbox-session-bus;plinkbox_sink")
