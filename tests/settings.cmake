plink_add_test(test_settingsview SOURCES test_settingsview.cpp LIBS plinkapp plinkart)
