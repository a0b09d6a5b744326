#include "playback/albumart.h"
#include "playback/tagreader.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"

#include <QFile>
#include <QGuiApplication>
#include <QThread>

using namespace AudioFixtures;

Q_DECLARE_METATYPE(AudioFixtures::Id3Frame)

namespace {

QString fixture(const QString& name)
{
    return TestEnvironment::documents() + QLatin1Char('/') + name;
}

// A short untagged tone (MP3 or WAV, after the name) with a hand-made ID3v2
// tag, so that each frame's text encoding is exactly the one asked for.
QString toneWithId3(const QString& name, const QList<Id3Frame>& frames, int version = 3)
{
    const QString path = fixture(name);
    if (!makeTone(path, Tone(0.5)) || !writeId3Tag(path, id3Tag(frames, version)))
        return {};
    return path;
}

QString picture(unsigned rgb)
{
    const QString path = fixture(QStringLiteral("cover-%1.png").arg(rgb, 6, 16, QLatin1Char('0')));
    return makePicture(path, 40, 30, rgb) ? path : QString();
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestTagReader : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void readsFirstTitleAndArtistOfId3Tag_data();
    void readsFirstTitleAndArtistOfId3Tag();
    void anythingButAnId3TagGivesDefaults_data();
    void anythingButAnId3TagGivesDefaults();
    void asyncResultsComeInOrderOnTheCallersThread();
    void asyncResultIsDroppedWithItsContext();
    void readsFirstEmbeddedPicture_data();
    void readsFirstEmbeddedPicture();
};

void TestTagReader::readsFirstTitleAndArtistOfId3Tag_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QList<Id3Frame>>("frames");
    QTest::addColumn<int>("version");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("artist");

    const QString cafe = QStringLiteral("Café Olé");
    const QString bjork = QStringLiteral("Björk");
    const QString cyrillic = QStringLiteral("Добрый день ♫");
    const QString tokyo = QStringLiteral("東京事変 🎸");

    QTest::newRow("Latin-1") << "latin1.mp3"
                             << QList<Id3Frame>{textFrame("TIT2", cafe), textFrame("TPE1", bjork)} << 3 << cafe
                             << bjork;
    QTest::newRow("UTF-16 with byte order mark")
        << "utf16.mp3"
        << QList<Id3Frame>{textFrame("TIT2", cyrillic, Encoding::Utf16), textFrame("TPE1", tokyo, Encoding::Utf16)}
        << 3 << cyrillic << tokyo;
    QTest::newRow("UTF-16 big-endian, v2.4")
        << "utf16be.mp3"
        << QList<Id3Frame>{textFrame("TIT2", tokyo, Encoding::Utf16BE), textFrame("TPE1", cafe, Encoding::Utf16BE)}
        << 4 << tokyo << cafe;
    QTest::newRow("UTF-8, v2.4, artist first")
        << "utf8.mp3"
        << QList<Id3Frame>{textFrame("TPE1", cyrillic, Encoding::Utf8), textFrame("TIT2", tokyo, Encoding::Utf8)}
        << 4 << tokyo << cyrillic;
    QTest::newRow("first of several frames")
        << "several.mp3"
        << QList<Id3Frame>{textFrame("TIT2", QStringLiteral("First")), textFrame("TPE1", QStringLiteral("Band")),
                           textFrame("TIT2", QStringLiteral("Second")),
                           textFrame("TPE1", QStringLiteral("Other band"))}
        << 3 << "First"
        << "Band";
    QTest::newRow("title only") << "title.mp3" << QList<Id3Frame>{textFrame("TIT2", QStringLiteral("Song"))} << 3
                                << "Song"
                                << "Unknown artist";
    QTest::newRow("other frames are not title or artist")
        << "band.mp3"
        << QList<Id3Frame>{textFrame("TPE2", QStringLiteral("Album band")), textFrame("TALB", QStringLiteral("Album"))}
        << 3 << "Track"
        << "Unknown artist";
    QTest::newRow("empty and blank frames read as missing")
        << "blank.mp3"
        << QList<Id3Frame>{textFrame("TIT2", QString()), textFrame("TPE1", QStringLiteral("  "), Encoding::Utf8)}
        << 4 << "Track"
        << "Unknown artist";
    QTest::newRow("ID3 chunk of a WAV file")
        << "chunk.wav"
        << QList<Id3Frame>{textFrame("TIT2", cafe), textFrame("TPE1", cyrillic, Encoding::Utf16)} << 3 << cafe
        << cyrillic;
}

void TestTagReader::readsFirstTitleAndArtistOfId3Tag()
{
    QFETCH(QString, name);
    QFETCH(QList<Id3Frame>, frames);
    QFETCH(int, version);
    QFETCH(QString, title);
    QFETCH(QString, artist);
    const QString path = toneWithId3(name, frames, version);
    QVERIFY(!path.isEmpty());
    const TrackTags tags = readTrackTags(path);
    QCOMPARE(tags.title, title);
    QCOMPARE(tags.artist, artist);
}

void TestTagReader::anythingButAnId3TagGivesDefaults_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("MP4 atoms") << "atoms.m4a";
    QTest::newRow("Vorbis comments in FLAC") << "comments.flac";
    QTest::newRow("Vorbis comments in Ogg") << "comments.ogg";
    QTest::newRow("MP3 without a tag") << "plain.mp3";
    QTest::newRow("random bytes named .mp3") << "noise.mp3";
    QTest::newRow("no such file") << "missing.mp3";
}

void TestTagReader::anythingButAnId3TagGivesDefaults()
{
    QFETCH(QString, name);
    const QString path = fixture(name);
    if (name == QLatin1String("noise.mp3")) {
        QVERIFY(writeRandomBytes(path, 64 * 1024));
    } else if (name != QLatin1String("missing.mp3")) {
        Tone tone(0.5);
        if (name != QLatin1String("plain.mp3")) {
            tone.title = QStringLiteral("Song");
            tone.artist = QStringLiteral("Band");
        }
        QVERIFY(makeTone(path, tone));
    }
    QCOMPARE(readTrackTags(path), TrackTags());
}

void TestTagReader::asyncResultsComeInOrderOnTheCallersThread()
{
    // An ffmpeg-tagged MP3 (ID3v2.4, UTF-8) between files that give defaults.
    Tone tagged(0.5);
    tagged.title = QStringLiteral("Song");
    tagged.artist = QStringLiteral("Band");
    QVERIFY(makeTone(fixture(QStringLiteral("song.mp3")), tagged));
    const QString second = toneWithId3(QStringLiteral("second.mp3"), {textFrame("TIT2", QStringLiteral("Two"))});
    QVERIFY(!second.isEmpty());
    const QList<QUrl> urls{QUrl::fromLocalFile(fixture(QStringLiteral("missing.mp3"))),
                           QUrl::fromLocalFile(fixture(QStringLiteral("song.mp3"))), QUrl::fromLocalFile(second)};

    QObject context;
    QList<TrackTags> received;
    QThread* deliveredOn = nullptr;
    int calls = 0;
    readTrackTagsAsync(urls, &context, [&](const QList<TrackTags>& tags) {
        received = tags;
        deliveredOn = QThread::currentThread();
        ++calls;
    });
    QCOMPARE(calls, 0); // never synchronously
    QTRY_COMPARE(calls, 1);
    QCOMPARE(deliveredOn, QThread::currentThread());
    const QList<TrackTags> expected{TrackTags(), TrackTags{QStringLiteral("Song"), QStringLiteral("Band")},
                                    TrackTags{QStringLiteral("Two"), QStringLiteral("Unknown artist")}};
    QCOMPARE(received, expected);
}

void TestTagReader::asyncResultIsDroppedWithItsContext()
{
    auto* context = new QObject;
    bool called = false;
    readTrackTagsAsync({QUrl::fromLocalFile(fixture(QStringLiteral("none.mp3")))}, context,
                       [&](const QList<TrackTags>&) { called = true; });
    delete context;
    QTest::qWait(300);
    QVERIFY(!called);
}

void TestTagReader::readsFirstEmbeddedPicture_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("hasPicture");
    QTest::newRow("ID3 APIC, first of two") << "apic.mp3" << true;
    QTest::newRow("MP4 covr") << "cover.m4a" << true;
    QTest::newRow("FLAC picture") << "cover.flac" << true;
    QTest::newRow("no picture") << "bare.mp3" << false;
    QTest::newRow("random bytes") << "noise.mp3" << false;
}

void TestTagReader::readsFirstEmbeddedPicture()
{
    QFETCH(QString, name);
    QFETCH(bool, hasPicture);
    const QString red = picture(0xff0000);
    const QString blue = picture(0x0000ff);
    QVERIFY(!red.isEmpty() && !blue.isEmpty());
    const QString path = fixture(name);
    if (name == QLatin1String("apic.mp3")) {
        QVERIFY(!toneWithId3(name, {pictureFrame(fileBytes(red)), pictureFrame(fileBytes(blue))}).isEmpty());
    } else if (name == QLatin1String("noise.mp3")) {
        QVERIFY(writeRandomBytes(path, 64 * 1024));
    } else {
        Tone tone(0.5);
        if (hasPicture)
            tone.picturePath = red;
        QVERIFY(makeTone(path, tone));
    }

    const QImage image = readAlbumArt(path);
    QCOMPARE(image.isNull(), !hasPicture);
    if (hasPicture) {
        QCOMPARE(image.size(), QSize(40, 30));
        QCOMPARE(QColor(image.pixel(20, 15)), QColor(Qt::red));
        QCOMPARE(embeddedPicture(path), fileBytes(red));
    }
}

PLINK_TEST_MAIN_WITH(QGuiApplication, TestTagReader)
#include "test_tagreader.moc"
