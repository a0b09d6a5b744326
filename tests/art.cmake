plink_add_test(test_art SOURCES test_art.cpp LIBS plinkart plinkartdraw plinkcore)
# The installed icon is a committed copy of what the build renders.
target_compile_definitions(test_art PRIVATE
    PLINK_INSTALLED_ICON="${PROJECT_SOURCE_DIR}/resources/icons/plinkbox.png")
