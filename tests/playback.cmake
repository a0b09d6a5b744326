# Playback: tag and picture reading; decoding; the audio engine and the interface sounds
# (they listen to the test desktop's null sink, so run them under scripts/testenv).
plink_add_test(test_tagreader SOURCES test_tagreader.cpp LIBS plinkcore)
plink_add_test(test_audiodecoder SOURCES test_audiodecoder.cpp LIBS plinkcore)
plink_add_test(test_audioplayer SOURCES test_audioplayer.cpp playerfixture.h LIBS plinkplayer plinksounds)

# A sound that is text, for the "could not play" path, next to the shipped ones.
set(plink_broken_sound ${CMAKE_CURRENT_BINARY_DIR}/soundfixtures/broken.m4a)
file(WRITE ${plink_broken_sound} "these are words, not sound\n")
qt_add_resources(test_audioplayer brokensound PREFIX /sounds BASE ${CMAKE_CURRENT_BINARY_DIR}/soundfixtures
    FILES ${plink_broken_sound})

# Tests that play sound or listen to the test sink must not overlap: one
# would hear the other. Every such test takes this lock.
set_tests_properties(test_audioplayer PROPERTIES RESOURCE_LOCK plinkbox_sink)
