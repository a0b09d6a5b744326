# The pictures the build draws, measured against the skin's own geometry.
plink_add_test(test_art SOURCES test_art.cpp LIBS plinkart plinkplayer)
