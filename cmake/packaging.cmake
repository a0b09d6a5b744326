# A Debian package of what `cmake --install` installs, made by `cpack` in the
# build folder: plinkbox_<version>_amd64.deb, its library dependencies
# computed from the binary by dpkg-shlibdeps.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME plinkbox)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "small skinned music player")
set(CPACK_PACKAGE_DESCRIPTION "plinkBox plays playlists of your own audio files in a small window drawn\
 like a portable player, with colour themes, shuffle and loop, gapless joins\
 between tracks and the desktop's media controls.")
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
