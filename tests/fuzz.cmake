# Regression cases for what the decoder fuzzers (fuzz/) found; the fuzzers'
# seed corpus doubles as test data.
plink_add_test(test_decoderregressions SOURCES test_decoderregressions.cpp LIBS plinkcore)
target_include_directories(test_decoderregressions PRIVATE ${PROJECT_SOURCE_DIR}/fuzz)
target_compile_definitions(test_decoderregressions PRIVATE
    PLINK_FUZZ_CORPUS="${PROJECT_SOURCE_DIR}/fuzz/corpus")
