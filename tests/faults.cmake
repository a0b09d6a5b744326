# The fault matrix: file-system faults under the store and the themes, and
# the faults met while playing (indexes past the lists, names that are no
# files).
plink_add_test(test_faultmatrix_store SOURCES test_faultmatrix_store.cpp LIBS plinkcore)
plink_add_test(test_faultmatrix_player SOURCES test_faultmatrix_player.cpp playerfixture.h LIBS plinkplayer)
# It plays through the test sink.
set_tests_properties(test_faultmatrix_player PROPERTIES RESOURCE_LOCK plinkbox_sink)
