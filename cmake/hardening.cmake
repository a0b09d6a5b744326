# Debian's hardening flags (fortified C library calls, stack protector,
# read-only relocations bound at start-up) for every target of ours, as a
# Debian package build would pass them. Not for the sanitizer builds, whose
# instrumentation they would only get in the way of.
find_program(PLINK_DPKG_BUILDFLAGS dpkg-buildflags)
set(PLINK_HARDENED OFF)
if(NOT PLINK_DPKG_BUILDFLAGS)
    return()
endif()
set(PLINK_HARDENED ON)
foreach(kind CPPFLAGS CXXFLAGS LDFLAGS)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env DEB_BUILD_MAINT_OPTIONS=hardening=+all
                        ${PLINK_DPKG_BUILDFLAGS} --get ${kind}
                    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "dpkg-buildflags --get ${kind} failed")
    endif()
    separate_arguments(flags UNIX_COMMAND "${flags}")
    # The build type chooses optimisation and debug information, and source
    # paths stay whole (tests find their data through them).
    list(FILTER flags EXCLUDE REGEX "^-(O.*|g.*|f(file|debug|macro)-prefix-map=.*)$")
    set(plink_${kind} ${flags})
endforeach()
# _FORTIFY_SOURCE does nothing (and warns) without optimisation.
set(optimised $<NOT:$<CONFIG:Debug>>)
target_compile_options(plink_warnings INTERFACE "$<${optimised}:${plink_CPPFLAGS}>" ${plink_CXXFLAGS})
target_link_options(plink_warnings INTERFACE ${plink_LDFLAGS})
