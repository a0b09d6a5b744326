plink_add_test(test_settingsview SOURCES test_settingsview.cpp playerfixture.h LIBS plinkapp plinkart)
plink_add_test(test_settingskeys SOURCES test_settingskeys.cpp LIBS plinksettings)
