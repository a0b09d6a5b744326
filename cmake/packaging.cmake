# A Debian package of what `cmake --install` installs, made by `cpack` in the
# build folder: plinkbox_<version>_amd64.deb, its library dependencies
# computed from the binary by dpkg-shlibdeps. tests/checkpackage.cmake holds
# it to lintian.

# What a Debian package carries beside the program: its copyright, its
# changelog and the manual page, the last two compressed as Debian does
# (gzip -n, so that the same sources give the same bytes).
file(STRINGS ${PROJECT_SOURCE_DIR}/packaging/changelog plink_changelog_top LIMIT_COUNT 1)
string(REGEX MATCH "^plinkbox \\(([^)]*)\\)" plink_changelog_top "${plink_changelog_top}")
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "packaging/changelog's newest entry is for version \"${CMAKE_MATCH_1}\": "
        "give it one for version ${PROJECT_VERSION}")
endif()
set(plink_docs ${PROJECT_BINARY_DIR}/packaging)
configure_file(${PROJECT_SOURCE_DIR}/resources/plinkbox.1 ${plink_docs}/plinkbox.1 @ONLY)
add_custom_command(
    OUTPUT ${plink_docs}/changelog.gz ${plink_docs}/plinkbox.1.gz
    COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/packaging/changelog ${plink_docs}/changelog
    COMMAND gzip -n -9 -f ${plink_docs}/changelog
    COMMAND gzip -n -9 -k -f ${plink_docs}/plinkbox.1
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/changelog ${plink_docs}/plinkbox.1
    COMMENT "Compressing the changelog and the manual page"
    VERBATIM
)
add_custom_target(plinkdocs ALL DEPENDS ${plink_docs}/changelog.gz ${plink_docs}/plinkbox.1.gz)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${plink_docs}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/plinkbox)
install(FILES ${plink_docs}/plinkbox.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME plinkbox)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "small skinned music player")
# One paragraph, a line of the control file for each line here.
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
    "plinkBox plays playlists of your own audio files in a small window drawn"
    "like a portable player, with colour themes, shuffle and loop, gapless"
    "joins between tracks and the desktop's media controls.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${PLINK_HOMEPAGE})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The plinkBox developers <maintainers@users.noreply.c-seed-3f28a608.example>")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt's X11 platform plugin is loaded at run time, so no library names it.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
# Qt's own texts (standard buttons, file dialogs) in the interface's language.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-translations-l10n")
include(CPack)
