add_executable(bench_store bench_store.cpp)
# With the theme pictures, so that a first start installs all of them.
target_link_libraries(bench_store PRIVATE plinkcore plinkart plink_warnings)
