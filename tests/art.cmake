# The pictures the build draws, measured against the skin's own geometry.
plink_add_test(test_art SOURCES test_art.cpp LIBS plinkart plinkplayer)
# The icon as last approved, to tell a deliberate redraw from an accident.
target_compile_definitions(test_art PRIVATE PLINK_APPROVED_ICON="${CMAKE_CURRENT_SOURCE_DIR}/data/icon-256.png")
