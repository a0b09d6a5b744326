// Time to read title and artist of 1,000 tagged MP3 files, on this thread and
// through collectTracksAsync, and to read and decode one cover picture.
#include "playback/albumart.h"
#include "playback/tagreader.h"
#include "support/audiofixtures.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

using namespace AudioFixtures;

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QTextStream out(stdout);
    QTemporaryDir folder;

    // One three-second MP3 with a title, an artist and a 500 × 500 cover,
    // copied 1,000 times so that every read opens a file of its own.
    const QString cover = folder.filePath(QStringLiteral("cover.png"));
    const QString first = folder.filePath(QStringLiteral("0.mp3"));
    if (!makePicture(cover, 500, 500, 0x336699) || !makeTone(first, Tone(3)))
        return 1;
    QFile picture(cover);
    if (!picture.open(QIODevice::ReadOnly))
        return 1;
    if (!writeId3Tag(first, id3Tag({textFrame("TIT2", QStringLiteral("Song")),
                                    textFrame("TPE1", QStringLiteral("Bänd"), Encoding::Utf16),
                                    pictureFrame(picture.readAll())})))
        return 1;
    QList<QUrl> urls{QUrl::fromLocalFile(first)};
    for (int i = 1; i < 1000; ++i) {
        const QString copy = folder.filePath(QStringLiteral("%1.mp3").arg(i));
        if (!QFile::copy(first, copy))
            return 1;
        urls.append(QUrl::fromLocalFile(copy));
    }

    QElapsedTimer timer;
    timer.start();
    int tagged = 0;
    for (const QUrl& url : urls)
        tagged += readTrackTags(url.toLocalFile()).title == QLatin1String("Song");
    const double direct = double(timer.nsecsElapsed()) / 1e6;

    QList<TrackTags> results;
    timer.restart();
    collectTracksAsync(urls, &app, [&](const CollectedTracks& found) { results = found.tags; });
    while (results.isEmpty())
        QTest::qWait(1);
    const double async = double(timer.nsecsElapsed()) / 1e6;

    timer.restart();
    const QImage image = readAlbumArt(first);
    const double art = double(timer.nsecsElapsed()) / 1e6;

    out << "readTrackTags, 1,000 files: " << QString::number(direct, 'f', 1) << " ms (" << tagged
        << " tagged)\n";
    out << "collectTracksAsync, 1,000 files, until delivered: " << QString::number(async, 'f', 1) << " ms\n";
    out << "readAlbumArt, one 500 x 500 PNG cover: " << QString::number(art, 'f', 1) << " ms"
        << (image.isNull() ? " (no picture!)" : "") << "\n";
    return tagged == 1000 && results.size() == 1000 && !image.isNull() ? 0 : 1;
}
