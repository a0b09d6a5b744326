# The player's start-up, CPU and memory beside their floors. Run it under
# scripts/testenv (it needs a display and a sound server).
add_executable(bench_player bench_player.cpp childrun.h resident.h)
target_link_libraries(bench_player PRIVATE plinkapp plinkart plinksounds plinktestsupport Qt6::Widgets plink_warnings)

# A folder of 2,000 files opened from the command line, against the real
# player. Run it under scripts/testenv.
add_executable(bench_openfolder bench_openfolder.cpp)
target_link_libraries(bench_openfolder PRIVATE plinkcore plinktestsupport Qt6::DBus plink_warnings)
target_compile_definitions(bench_openfolder PRIVATE PLINK_EXECUTABLE="$<TARGET_FILE:plinkbox>")

# A 10,000-track library beside a 10-track one: start-up, menus, choosing,
# the editor and memory, each through the real program's start. Run it under
# scripts/testenv.
add_executable(bench_library bench_library.cpp childrun.h resident.h)
target_link_libraries(bench_library PRIVATE plinkapp plinkart plinksounds plinktestsupport Qt6::Widgets Qt6::Test plink_warnings)
# Its floor, built as a plain Qt program is: Qt Widgets alone, no flags of ours.
add_executable(bench_emptywindow emptywindow.cpp childrun.h)
target_link_libraries(bench_emptywindow PRIVATE Qt6::Widgets)
target_compile_definitions(bench_library PRIVATE PLINK_EMPTY_WINDOW="$<TARGET_FILE:bench_emptywindow>")
