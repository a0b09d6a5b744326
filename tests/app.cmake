# The real executable on the test desktop: it owns the player's name on the
# session bus and plays through the test sink.
plink_add_test(test_playerwindow_e2e SOURCES test_playerwindow_e2e.cpp playerfixture.h
    LIBS plinkcore plinkart Qt6::Widgets DISPLAY)
target_compile_definitions(test_playerwindow_e2e PRIVATE PLINK_EXECUTABLE="$<TARGET_FILE:plinkbox>")
add_dependencies(test_playerwindow_e2e plinkbox)
set_tests_properties(test_playerwindow_e2e PROPERTIES RESOURCE_LOCK "plinkbox-session-bus;plinkbox_sink")
