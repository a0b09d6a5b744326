# The store and its themes, with small pictures of one colour standing in for
# the real ones, and the file-system faults under them.
plink_add_test(test_store SOURCES test_store.cpp LIBS plinkcore)
set_source_files_properties(data/pictures/fallback-close@2x.png
    PROPERTIES QT_RESOURCE_ALIAS mini-blueberry-close@2x.png)
qt_add_resources(test_store test_theme_pictures PREFIX /themes BASE data/pictures FILES
    data/pictures/neo-lime-close@2x.png data/pictures/neo-lime-player@2x.png
    data/pictures/mini-blueberry-close@2x.png)
qt_add_resources(test_store test_fallback_pictures PREFIX /fallback BASE data/pictures FILES
    data/pictures/fallback-close@2x.png)
plink_add_test(test_trackfiles SOURCES test_trackfiles.cpp LIBS plinkcore)
