#include "playback/albumart.h"
#include "playback/tagreader.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QGuiApplication>
#include <QThread>

using namespace AudioFixtures;
using Frames = QList<Id3Frame>;

// Hand-made ID3 frames ("extended": of that version, with an extended header; "cover": a red, then a blue picture,
// the first being the cover) or, without frames, the container's own tags holding Song/Band and the red cover.
struct Tagged { QString name; Frames frames; int extended; bool cover; TrackTags expected; };

class TestTagReader : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void readsTitleArtistAndCover_data()
    {
        QTest::addColumn<Tagged>("row");
        using enum Encoding;
        const QString cafe = "Café Olé", bjork = "Björk", cyrillic = "Добрый день ♫", tokyo = "東京事変 🎸", other = "Other";
        QTest::newRow("first of several, Latin-1; TPE2 is no artist") << Tagged{"several.mp3",
            {textFrame("TPE2", other), textFrame("TIT2", cafe), textFrame("TPE1", bjork), textFrame("TIT2", other),
             textFrame("TPE1", other)}, 0, true, {cafe, bjork}};
        QTest::newRow("UTF-16 with BOM") << Tagged{"utf16.mp3",
            {textFrame("TIT2", cyrillic, Utf16), textFrame("TPE1", tokyo, Utf16)}, 0, false, {cyrillic, tokyo}};
        QTest::newRow("UTF-8 and UTF-16BE, artist first") << Tagged{"utf8.mp3",
            {textFrame("TPE1", cyrillic, Utf8), textFrame("TIT2", tokyo, Utf16BE)}, 0, false, {tokyo, cyrillic}};
        QTest::newRow("blank is missing")
            << Tagged{"blank.mp3", {textFrame("TIT2", "  "), textFrame("TPE1", "", Utf8)}, 0, false, {}};
        QTest::newRow("several values in a frame, a blank one left out") << Tagged{"values.mp3",
            {textFrame("TIT2", QStringList{"Intro", " ", "Outro"}.join(QChar(0)), Utf8),
             textFrame("TPE1", QStringList{"2 Unlimited", "Ray", "Anita"}.join(QChar(0)))},
            0, false, {"Intro / Outro", "2 Unlimited / Ray / Anita"}};
        const Frames frames{textFrame("TIT2", cafe), textFrame("TPE1", bjork)};
        QTest::newRow("ID3v2.3, extended header") << Tagged{"extended.mp3", frames, 3, false, {cafe, bjork}};
        QTest::newRow("ID3v2.4 chunk of a WAV file, extended header") << Tagged{"chunk.wav", frames, 4, false, {cafe, bjork}};
        QTest::newRow("ffmpeg's own ID3v2.4") << Tagged{"tagged.mp3", {}, 0, false, {"Song", "Band"}};
        QTest::newRow("MP4 atoms and covr") << Tagged{"atoms.m4a", {}, 0, true, {}};
        QTest::newRow("FLAC comments and picture") << Tagged{"comments.flac", {}, 0, true, {}};
    }
    void readsTitleArtistAndCover()
    {
        QFETCH(Tagged, row);
        auto& [name, frames, extended, cover, expected] = row;
        const QString dir = TestEnvironment::documents() + '/';
        const auto picture = [&](const QString& file, unsigned rgb) { // 40 × 30 of one colour
            return makePicture(dir + file, 40, 30, rgb) ? TestFiles::readFile(dir + file) : QByteArray();
        };
        const QByteArray red = picture("red.png", 0xff0000);
        Tone tone(0.5);
        if (frames.isEmpty()) {
            tone.title = "Song";
            tone.artist = "Band";
            tone.picturePath = cover ? dir + "red.png" : QString();
        } else if (cover) {
            frames << pictureFrame(red) << pictureFrame(picture("blue.png", 0x0000ff));
        }
        const QString path = dir + name;
        QVERIFY(!red.isEmpty() && makeTone(path, tone));
        QVERIFY(frames.isEmpty() || writeId3Tag(path, id3Tag(frames, extended ? extended : 4, extended)));
        // Read later, on the caller's thread, not at all once the context is gone.
        const QList<QUrl> urls{QUrl::fromLocalFile(path)};
        auto* gone = new QObject;
        collectTracksAsync(urls, gone, [](const CollectedTracks&) { QFAIL("called after its context was gone"); });
        delete gone;
        QList<TrackTags> read;
        collectTracksAsync(urls, this, [&](const CollectedTracks& found) { read = QThread::currentThread() == thread() ? found.tags : read; });
        QVERIFY(read.isEmpty());
        QTRY_COMPARE(read, QList<TrackTags>{expected});
        const QImage art = readAlbumArt(path);
        QVERIFY(cover ? art.size() == QSize(40, 30) && QColor(art.pixel(20, 15)) == QColor(Qt::red) : art.isNull());
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestTagReader)
#include "test_tagreader.moc"
