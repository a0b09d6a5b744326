# The pictures the build draws, measured against the skin's own geometry.
plink_add_test(test_art SOURCES test_art.cpp LIBS plinkart plinkplayer)
# The installed icon is a committed copy of what the build renders.
target_compile_definitions(test_art PRIVATE
    PLINK_INSTALLED_ICON="${PROJECT_SOURCE_DIR}/resources/icons/plinkbox.png")
