// Feeds arbitrary bytes to the decoder of theme.json.
#include "fuzzcheck.h"

#include "themes/themedata.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzDecoder(data, size, themeDataFromJson, "theme");
}
