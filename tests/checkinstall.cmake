# Installs into a scratch prefix and checks that the program, its desktop
# entry (with the audio categories) and its icon land in the standard places.
#   cmake -DBUILD_DIR=... -DPREFIX=... -P checkinstall.cmake
file(REMOVE_RECURSE "${PREFIX}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${PREFIX}"
                RESULT_VARIABLE result OUTPUT_QUIET)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "cmake --install failed")
endif()
foreach(path bin/plinkbox share/applications/plinkbox.desktop share/icons/hicolor/256x256/apps/plinkbox.png)
    if(NOT EXISTS "${PREFIX}/${path}")
        message(FATAL_ERROR "not installed: ${path}")
    endif()
endforeach()
file(READ "${PREFIX}/share/applications/plinkbox.desktop" entry)
foreach(line "Exec=plinkbox" "Icon=plinkbox" "Categories=AudioVideo;Audio;Player;")
    string(FIND "${entry}" "${line}" found)
    if(found EQUAL -1)
        message(FATAL_ERROR "desktop entry lacks ${line}")
    endif()
endforeach()
file(REMOVE_RECURSE "${PREFIX}")
