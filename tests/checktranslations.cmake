# Fails while a text of the sources has no finished translation in a .ts file:
# new or changed since the file was last updated, or left unfinished in it.
#   cmake -DLUPDATE=... -DSOURCES=<lupdate list file> -DTS_DIR=... -DWORK=... -P checktranslations.cmake
file(REMOVE_RECURSE "${WORK}")
file(GLOB originals "${TS_DIR}/*.ts")
file(COPY ${originals} DESTINATION "${WORK}")
file(GLOB copies "${WORK}/*.ts")
execute_process(COMMAND "${LUPDATE}" -silent -no-obsolete -locations none "@${SOURCES}" -ts ${copies}
                RESULT_VARIABLE result ERROR_VARIABLE errors)
if(NOT result EQUAL 0 OR NOT errors STREQUAL "")
    message(FATAL_ERROR "lupdate: ${errors}")
endif()
foreach(copy IN LISTS copies)
    file(READ "${copy}" text)
    string(FIND "${text}" "type=\"unfinished\"" at)
    if(NOT at EQUAL -1)
        cmake_path(GET copy FILENAME name)
        message(FATAL_ERROR "translations/${name} lacks translations: the entries marked "
            "type=\"unfinished\" in ${copy}. Run the update_translations target and translate them.")
    endif()
endforeach()
