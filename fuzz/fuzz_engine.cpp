// Arbitrary bytes as an audio file to the decoder, read to its end, sought to the middle and read again, as play()
// and a seek do; a refused file must say why. The FFmpeg module lives while a decoder of its own is open (here a kept
// file, as if playing): every 16th input runs without it, so that anything of the module outliving it is read after
// it has gone.
#include "fuzzcheck.h"

#include "playback/audiodecoder.h"

#include <QFile>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static std::unique_ptr<AudioDecoder> playing;
    static unsigned count = 0;
    QString error;
    if (++count % 16 == 0) {
        playing.reset();
    } else if (!playing) {
        QFile keeper(QStringLiteral(PLINK_FUZZ_KEEPER));
        if (!keeper.open(QIODevice::ReadOnly) || !(playing = AudioDecoder::openBytes(keeper.readAll(), 48000, &error)))
            fuzzFault("engine", "the file kept open cannot be opened: " + error);
    }
    std::unique_ptr<AudioDecoder> decoder =
        AudioDecoder::openBytes(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)), 48000, &error);
    if (!decoder && error.toUtf8().trimmed().isEmpty())
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
    const QString fault = decoder->fault();
    decoder.reset();
    // Read after the decoder, and perhaps the module, have gone.
    if (!fault.isEmpty() && fault.toUtf8().trimmed().isEmpty())
        fuzzFault("engine", "a fault without words");
    return 0;
}
