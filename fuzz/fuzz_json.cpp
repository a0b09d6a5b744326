// Arbitrary bytes to the decoder of one JSON file; the build makes a fuzzer of it for settings, playlists and themes.
#include "fuzzcheck.h"

#include "themes/themedata.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzDecoder(data, size, PLINK_FUZZ_DECODE, PLINK_FUZZ_NAME);
}
