# The real executable on the test desktop: it owns the player's name on the
# session bus and plays through the test sink.
plink_add_test(test_playerwindow_e2e SOURCES test_playerwindow_e2e.cpp playerfixture.h
    LIBS plinkcore plinkart Qt6::Widgets DISPLAY)
target_compile_definitions(test_playerwindow_e2e PRIVATE PLINK_EXECUTABLE="$<TARGET_FILE:plinkbox>")
add_dependencies(test_playerwindow_e2e plinkbox)
set_tests_properties(test_playerwindow_e2e PROPERTIES RESOURCE_LOCK "plinkbox-session-bus;plinkbox_sink")
# The command line's parser, and the real executable driven from a shell.
plink_add_test(test_commandline SOURCES test_commandline.cpp playerfixture.h LIBS plinkapp)
target_compile_definitions(test_commandline PRIVATE PLINK_EXECUTABLE="$<TARGET_FILE:plinkbox>"
    PLINK_VERSION="${PROJECT_VERSION}")
add_dependencies(test_commandline plinkbox)
set_tests_properties(test_commandline PROPERTIES RESOURCE_LOCK "plinkbox-session-bus;plinkbox_sink")
