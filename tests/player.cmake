plink_add_test(test_skingeometry SOURCES test_skingeometry.cpp LIBS plinkapp)
plink_add_test(test_transport SOURCES test_transport.cpp playerfixture.h LIBS plinkapp)
plink_add_test(test_contentview SOURCES test_contentview.cpp playerfixture.h LIBS plinkplayer)
# It plays through the test sink.
set_tests_properties(test_contentview PROPERTIES RESOURCE_LOCK plinkbox_sink)
plink_add_test(test_skininput SOURCES test_skininput.cpp playerfixture.h LIBS plinkplayer)
set_tests_properties(test_skininput PROPERTIES RESOURCE_LOCK plinkbox_sink)
plink_add_test(test_filterlist SOURCES test_filterlist.cpp LIBS plinkplayer)
