// Feeds arbitrary bytes to the decoder of a playlist file.
#include "fuzzcheck.h"

#include "store/records.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzzDecoder(data, size, playlistDataFromJson, "playlist");
    return 0;
}
