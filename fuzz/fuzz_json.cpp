// Arbitrary bytes to the decoder of one JSON file; the build makes a fuzzer of it for settings, playlists and themes.
#include "fuzzcheck.h"

#include "store/jsonreader.h"
#include "themes/themedata.h"

#include <string_view>

namespace {

// A playlist's track found without decoding the rest is the whole decoding's track, or none past its end.
void checkOneTrack(const QByteArray& bytes)
{
    const Decoded<PlaylistData> whole = playlistDataFromJson(bytes);
    if (!whole)
        return;
    const qsizetype count = whole.value->tracks.size();
    for (const qsizetype index : {qsizetype(0), qsizetype(1), count - 1, count}) {
        if (index < 0)
            continue;
        const JsonElement element = jsonArrayElement(bytes, QLatin1StringView("tracks"), index);
        if (element.outcome == JsonElement::Outcome::notFound)
            continue; // the caller decodes it all
        if ((element.outcome == JsonElement::Outcome::pastTheEnd) != (index >= count))
            fuzzFault("playlist", QStringLiteral("track %1 of %2 found past the end, or not").arg(index).arg(count));
        if (index >= count)
            continue;
        QString error;
        const auto object = parseJsonObject(element.text.toByteArray(), error);
        const Decoded<Track> track = object ? trackFromJson(*object, index) : Decoded<Track>{};
        if (!track || !(*track.value == whole.value->tracks.at(index)))
            fuzzFault("playlist", QStringLiteral("track %1 found alone differs: ").arg(index) + QString::fromUtf8(element.text.toByteArray()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (std::string_view(PLINK_FUZZ_NAME) == "playlist")
        checkOneTrack(QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)));
    return fuzzDecoder(data, size, PLINK_FUZZ_DECODE, PLINK_FUZZ_NAME);
}
