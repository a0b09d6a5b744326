# The player's start-up, CPU and memory beside their floors. Run it under
# scripts/testenv (it needs a display and a sound server).
add_executable(bench_player bench_player.cpp)
target_link_libraries(bench_player PRIVATE plinkapp plinkart plinksounds plinktestsupport Qt6::Widgets plink_warnings)
