plink_add_test(test_mprisservice SOURCES test_mprisservice.cpp LIBS plinkapp)
# Tests that own the player's name on the session bus must not run side by side.
set_tests_properties(test_mprisservice PROPERTIES RESOURCE_LOCK plinkbox-session-bus)
plink_add_test(test_desktop_e2e SOURCES test_desktop_e2e.cpp playerfixture.h
    LIBS plinkcore Qt6::Widgets DISPLAY)
target_compile_definitions(test_desktop_e2e PRIVATE PLINK_EXECUTABLE="$<TARGET_FILE:plinkbox>")
add_dependencies(test_desktop_e2e plinkbox)
set_tests_properties(test_desktop_e2e PROPERTIES RESOURCE_LOCK plinkbox-session-bus)
add_test(NAME test_install COMMAND ${CMAKE_COMMAND} -DBUILD_DIR=${CMAKE_BINARY_DIR}
    -DPREFIX=${CMAKE_CURRENT_BINARY_DIR}/install-check -P ${CMAKE_CURRENT_SOURCE_DIR}/checkinstall.cmake)
