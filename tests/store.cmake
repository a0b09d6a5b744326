plink_add_test(test_records SOURCES test_records.cpp LIBS plinkcore)
