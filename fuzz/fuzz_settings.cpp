// Feeds arbitrary bytes to the decoder of the settings file.
#include "fuzzcheck.h"

#include "store/records.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzDecoder(data, size, settingsDataFromJson, "settings");
}
