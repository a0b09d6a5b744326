plink_add_test(test_settingsview SOURCES test_settingsview.cpp playerfixture.h LIBS plinkapp plinkart)
