# Playback figures: the media backend at the null sink, CPU while playing and
# paused, and tag reading speed. Run them under scripts/testenv.
add_executable(bench_mediabackend bench_mediabackend.cpp)
target_link_libraries(bench_mediabackend PRIVATE plinkcore plinktestsupport plink_warnings)
