# Playback figures: CPU while playing and paused, latencies at the null sink,
# and tag reading speed. Run them under scripts/testenv.
add_executable(bench_playback bench_playback.cpp resident.h)
target_link_libraries(bench_playback PRIVATE plinkcore plinksounds plinktestsupport plink_warnings)
add_executable(bench_tagreader bench_tagreader.cpp)
target_link_libraries(bench_tagreader PRIVATE plinkcore plinktestsupport plink_warnings)
