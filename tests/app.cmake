# The real executable on the test desktop.
plink_add_test(test_playerwindow_e2e SOURCES test_playerwindow_e2e.cpp playerfixture.h
    LIBS plinkcore plinkart Qt6::Widgets DISPLAY)
target_compile_definitions(test_playerwindow_e2e PRIVATE PLINK_EXECUTABLE="$<TARGET_FILE:plinkbox>")
add_dependencies(test_playerwindow_e2e plinkbox)
