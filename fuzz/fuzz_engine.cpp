// Feeds arbitrary bytes, as an audio file, to the engine's own opening and
// decoding: the decoder over memory, read to its end, then sought to the
// middle and read again, as play() and a seek do. A refused file must say why.
#include "fuzzcheck.h"

#include "playback/audiodecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QString error;
    const auto decoder = AudioDecoder::openBytes(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)), 48000, &error);
    if (!decoder && error.isEmpty())
        fuzzFault("engine", "a file refused without a reason");
    if (!decoder)
        return 0;
    float buffer[1024 * AudioDecoder::channels];
    // Bounded, because a header may declare hours of audio.
    for (int pass = 0; pass < 2; ++pass) {
        for (int i = 0; i < 100 && !decoder->atEnd(); ++i) {
            if (decoder->read(buffer, 1024) == 0 && decoder->inputDone())
                decoder->finish();
        }
        decoder->seek(decoder->duration() / 2);
    }
    return 0;
}
