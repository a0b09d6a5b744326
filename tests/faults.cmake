# The fault matrix: file-system faults under the store and the themes.
plink_add_test(test_faultmatrix_store SOURCES test_faultmatrix_store.cpp LIBS plinkcore)
