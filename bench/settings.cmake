# The playlist editor adding a thousand files: time until shown, stalls of the
# user-interface thread, writes of the playlist file.
add_executable(bench_playlistadd bench_playlistadd.cpp
    ${PROJECT_SOURCE_DIR}/tests/settingsfixtures.h ${PROJECT_SOURCE_DIR}/tests/settingsfixtures.cpp)
target_include_directories(bench_playlistadd PRIVATE ${PROJECT_SOURCE_DIR}/tests)
target_link_libraries(bench_playlistadd PRIVATE plinksettings plinktestsupport plink_warnings)
