# The playlist editor adding a thousand files: time until shown, stalls of the
# user-interface thread, writes of the playlist file.
add_executable(bench_playlistadd bench_playlistadd.cpp filewrites.h filewrites.cpp)
target_link_libraries(bench_playlistadd PRIVATE plinksettings plinktestsupport plink_warnings)
