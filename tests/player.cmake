plink_add_test(test_skingeometry SOURCES test_skingeometry.cpp LIBS plinkapp)
plink_add_test(test_transport SOURCES test_transport.cpp playerfixture.h LIBS plinkapp)
plink_add_test(test_contentview SOURCES test_contentview.cpp playerfixture.h LIBS plinkplayer)
