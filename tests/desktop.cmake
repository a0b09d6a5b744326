# The player from the desktop: files opened, the session's platform. It plays through the test sink.
plink_add_test(test_desktop SOURCES test_desktop.cpp playerfixture.h LIBS plinkapp)
set_tests_properties(test_desktop PROPERTIES RESOURCE_LOCK "plinkbox_sink")
# The Debian package holds what `cmake --install` installs, passes lintian, and
# its desktop entry, AppStream file and manual page pass their validators.
add_test(NAME test_package COMMAND ${CMAKE_COMMAND} -DBUILD_DIR=${CMAKE_BINARY_DIR}
    -DWORK=${CMAKE_CURRENT_BINARY_DIR}/package-check -DHARDENED=${PLINK_HARDENED}
    -P ${CMAKE_CURRENT_SOURCE_DIR}/checkpackage.cmake)
set_tests_properties(test_package PROPERTIES TIMEOUT 300)
# Every member of the media-control interfaces, over the private session bus.
# Tests that own the player's name on the session bus must not run side by side.
plink_add_test(test_mpris SOURCES test_mpris.cpp playerfixture.h LIBS plinkapp)
set_tests_properties(test_mpris PROPERTIES RESOURCE_LOCK "plinkbox-session-bus;plinkbox_sink")
target_compile_definitions(test_mpris PRIVATE PLINK_DESKTOP_ENTRY="${PROJECT_SOURCE_DIR}/resources/plinkbox.desktop")
