plink_add_test(test_settingsview SOURCES test_settingsview.cpp settingsfixtures.h settingsfixtures.cpp
    LIBS plinkapp plinkart)
