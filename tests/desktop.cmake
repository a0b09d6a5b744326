plink_add_test(test_mprisservice SOURCES test_mprisservice.cpp playerfixture.h LIBS plinkapp)
# Tests that own the player's name on the session bus must not run side by side.
set_tests_properties(test_mprisservice PROPERTIES RESOURCE_LOCK plinkbox-session-bus)
add_test(NAME test_install COMMAND ${CMAKE_COMMAND} -DBUILD_DIR=${CMAKE_BINARY_DIR}
    -DPREFIX=${CMAKE_CURRENT_BINARY_DIR}/install-check -P ${CMAKE_CURRENT_SOURCE_DIR}/checkinstall.cmake)
