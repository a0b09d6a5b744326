plink_add_test(test_configthemes SOURCES test_configthemes.cpp LIBS plinkcore)
# A small set of test pictures stands in for the real artwork.
set_source_files_properties(data/pictures/fallback-close@2x.png
    PROPERTIES QT_RESOURCE_ALIAS mini-blueberry-close@2x.png)
qt_add_resources(test_configthemes test_theme_pictures PREFIX /themes BASE data/pictures FILES
    data/pictures/neo-lime-close@2x.png data/pictures/neo-lime-player@2x.png
    data/pictures/mini-blueberry-close@2x.png)
qt_add_resources(test_configthemes test_fallback_pictures PREFIX /fallback BASE data/pictures FILES
    data/pictures/fallback-close@2x.png)
