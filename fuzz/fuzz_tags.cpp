// Arbitrary bytes as an audio file to the tag reader: title and artist never blank, and as a track the editor makes
// of them they come back unchanged from a playlist written and read again.
#include "fuzzcheck.h"

#include "playback/tagreader.h"

#include <QFile>
#include <QTemporaryDir>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // The reader judges the container by its first bytes, so one name will do.
    static QTemporaryDir scratch;
    QFile file(scratch.filePath("input"));
    if (!file.open(QIODevice::WriteOnly) || file.write(reinterpret_cast<const char*>(data), qint64(size)) != qint64(size))
        fuzzFault("tag reader", "cannot write " + file.fileName());
    file.close();
    const TrackTags tags = readTrackTags(file.fileName());
    const PlaylistData playlist{{Track::make("file:///music/input.mp3", tags.title, tags.artist)}};
    if (tags.title.trimmed().isEmpty() || tags.artist.trimmed().isEmpty() || playlistDataFromJson(toJson(playlist)).value != playlist)
        fuzzFault("tag reader", "a blank or changing title or artist: " + tags.title + " / " + tags.artist);
    return 0;
}
