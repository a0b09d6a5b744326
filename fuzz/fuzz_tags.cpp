// Feeds arbitrary bytes, as an audio file, to the tag reader. The title and
// artist it gives become a track of a playlist file, so the track must also
// come back unchanged from a playlist written and read again.
#include "fuzzcheck.h"

#include "playback/tagreader.h"
#include "store/records.h"

#include <QTemporaryDir>

#include <cstdio>

namespace {

QTemporaryDir* scratch = nullptr;
QByteArray inputPath;

// Printable ASCII as it is, every other UTF-16 unit as \uXXXX, so that a
// report shows exactly what the reader gave.
QByteArray escaped(const QString& text)
{
    QByteArray out;
    for (const QChar c : text) {
        if (c.unicode() >= 0x20 && c.unicode() < 0x7f)
            out += char(c.unicode());
        else
            out += "\\u" + QByteArray::number(c.unicode(), 16).rightJustified(4, '0');
    }
    return out;
}

void fail(const char* fault, const TrackTags& tags)
{
    std::fprintf(stderr, "tag reader: %s\ntitle: %s\nartist: %s\n", fault, escaped(tags.title).constData(),
                 escaped(tags.artist).constData());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    scratch = new QTemporaryDir;
    if (!scratch->isValid()) {
        std::fprintf(stderr, "no temporary folder: %s\n", qPrintable(scratch->errorString()));
        std::abort();
    }
    // The reader judges the container by its first bytes, so one name will do.
    inputPath = QFile::encodeName(scratch->filePath(QStringLiteral("input")));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::FILE* file = std::fopen(inputPath.constData(), "wb");
    if (!file || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) {
        std::perror(inputPath.constData());
        std::abort();
    }
    const TrackTags tags = readTrackTags(QFile::decodeName(inputPath));
    if (tags.title.trimmed().isEmpty() || tags.artist.trimmed().isEmpty())
        fail("a blank title or artist", tags);
    // Made the way the playlist editor makes a track from what it read.
    const PlaylistData playlist{{Track::make(QStringLiteral("file:///music/input.mp3"), tags.title, tags.artist)}};
    const Decoded<PlaylistData> saved = playlistDataFromJson(toJson(playlist));
    if (!saved || !(*saved.value == playlist))
        fail("the tags change when their playlist is saved and read", tags);
    return 0;
}
