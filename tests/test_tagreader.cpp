#include "playback/albumart.h"
#include "playback/tagreader.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"

#include <QFile>
#include <QGuiApplication>
#include <QThread>

using namespace AudioFixtures;
using Frames = QList<Id3Frame>;
Q_DECLARE_METATYPE(AudioFixtures::Id3Frame)

namespace {

QString fixture(const QString& name)
{
    return TestEnvironment::documents() + QLatin1Char('/') + name;
}

// A short tone with a hand-made ID3v2 tag, so that each frame's encoding is exactly the one asked for.
QString toneWithId3(const QString& name, const Frames& frames, int version = 3)
{
    return makeTone(fixture(name), Tone(0.5)) && writeId3Tag(fixture(name), id3Tag(frames, version)) ? fixture(name)
                                                                                                     : QString();
}

// Random bytes, or a tone: untagged, or with its container's own tags and maybe a cover.
QString makeFile(const QString& name, const QString& kind, const QString& cover = {})
{
    Tone tone(0.5);
    if (kind != QLatin1String("plain")) {
        tone.title = QStringLiteral("Song");
        tone.artist = QStringLiteral("Band");
    }
    if (kind == QLatin1String("covered"))
        tone.picturePath = cover;
    if (kind == QLatin1String("noise"))
        return writeRandomBytes(fixture(name), 64 * 1024) ? fixture(name) : QString();
    return makeTone(fixture(name), tone) ? fixture(name) : QString();
}

} // namespace

class TestTagReader : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void readsFirstTitleAndArtistOfId3Tag_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Frames>("frames");
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("artist");
        const QString cafe = QStringLiteral("Café Olé"), bjork = QStringLiteral("Björk");
        const QString cyrillic = QStringLiteral("Добрый день ♫"), tokyo = QStringLiteral("東京事変 🎸");
        QTest::newRow("Latin-1") << "latin1.mp3" << Frames{textFrame("TIT2", cafe), textFrame("TPE1", bjork)} << 3
                                 << cafe << bjork;
        QTest::newRow("UTF-16 with BOM") << "utf16.mp3"
                                         << Frames{textFrame("TIT2", cyrillic, Encoding::Utf16),
                                                   textFrame("TPE1", tokyo, Encoding::Utf16)}
                                         << 3 << cyrillic << tokyo;
        QTest::newRow("UTF-16BE, v2.4") << "utf16be.mp3" << Frames{textFrame("TIT2", tokyo, Encoding::Utf16BE)} << 4
                                        << tokyo << "Unknown artist";
        QTest::newRow("UTF-8, v2.4, artist first") << "utf8.mp3"
                                                   << Frames{textFrame("TPE1", cyrillic, Encoding::Utf8),
                                                             textFrame("TIT2", tokyo, Encoding::Utf8)}
                                                   << 4 << tokyo << cyrillic;
        QTest::newRow("first of several, TPE2 is no artist")
            << "several.mp3"
            << Frames{textFrame("TPE2", "Album band"), textFrame("TIT2", "First"), textFrame("TPE1", "Band"),
                      textFrame("TIT2", "Second"), textFrame("TPE1", "Other")}
            << 3 << "First" << "Band";
        QTest::newRow("empty and blank are missing")
            << "blank.mp3" << Frames{textFrame("TIT2", QString()), textFrame("TPE1", "  ", Encoding::Utf8)} << 4
            << "Track" << "Unknown artist";
        QTest::newRow("ID3 chunk of a WAV file") << "chunk.wav" << Frames{textFrame("TIT2", cafe)} << 3 << cafe
                                                 << "Unknown artist";
    }
    void readsFirstTitleAndArtistOfId3Tag()
    {
        QFETCH(QString, name);
        QFETCH(Frames, frames);
        QFETCH(int, version);
        QFETCH(QString, title);
        QFETCH(QString, artist);
        const QString path = toneWithId3(name, frames, version);
        QVERIFY(!path.isEmpty());
        QCOMPARE(readTrackTags(path), (TrackTags{title, artist}));
    }

    // Only ID3v2 counts; files with a picture give the first one, whatever the container.
    void otherTagsGiveDefaultsAndPicturesAreRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("kind");
        QTest::newRow("MP4 atoms and covr") << "atoms.m4a" << "covered";
        QTest::newRow("Vorbis comments and picture in FLAC") << "comments.flac" << "covered";
        QTest::newRow("Vorbis comments in Ogg") << "comments.ogg" << "tagged";
        QTest::newRow("MP3 without a tag") << "plain.mp3" << "plain";
        QTest::newRow("random bytes named .mp3") << "noise.mp3" << "noise";
        QTest::newRow("ID3 APIC, first of two") << "apic.mp3" << "apic";
    }
    void otherTagsGiveDefaultsAndPicturesAreRead()
    {
        QFETCH(QString, name);
        QFETCH(QString, kind);
        const QString red = fixture(QStringLiteral("red.png")), blue = fixture(QStringLiteral("blue.png"));
        QVERIFY(makePicture(red, 40, 30, 0xff0000) && makePicture(blue, 40, 30, 0x0000ff));
        QFile redFile(red), blueFile(blue);
        QVERIFY(redFile.open(QIODevice::ReadOnly) && blueFile.open(QIODevice::ReadOnly));
        const QByteArray redBytes = redFile.readAll();
        const QString path = kind == QLatin1String("apic")
            ? toneWithId3(name, {pictureFrame(redBytes), pictureFrame(blueFile.readAll())})
            : makeFile(name, kind, red);
        QVERIFY(!path.isEmpty());
        const bool hasPicture = kind == QLatin1String("covered") || kind == QLatin1String("apic");
        if (kind != QLatin1String("apic"))
            QCOMPARE(readTrackTags(path), TrackTags());
        const QImage image = readAlbumArt(path);
        QCOMPARE(image.isNull(), !hasPicture);
        if (hasPicture) {
            QCOMPARE(image.size(), QSize(40, 30));
            QCOMPARE(QColor(image.pixel(20, 15)), QColor(Qt::red));
            QCOMPARE(embeddedPicture(path), redBytes);
        }
    }

    // Results come later, in the order asked, on the caller's thread, and not at all once the context is gone.
    void readsAsynchronously()
    {
        const QString second = toneWithId3(QStringLiteral("second.mp3"), {textFrame("TIT2", "Two")});
        QVERIFY(!makeFile(QStringLiteral("song.mp3"), QStringLiteral("tagged")).isEmpty() && !second.isEmpty());
        const QList<QUrl> urls{QUrl::fromLocalFile(fixture(QStringLiteral("missing.mp3"))),
                               QUrl::fromLocalFile(fixture(QStringLiteral("song.mp3"))), QUrl::fromLocalFile(second)};
        auto* gone = new QObject;
        bool goneCalled = false;
        readTrackTagsAsync(urls, gone, [&](const QList<TrackTags>&) { goneCalled = true; });
        delete gone;
        QObject context;
        QList<TrackTags> received;
        QThread* deliveredOn = nullptr;
        int calls = 0;
        readTrackTagsAsync(urls, &context, [&](const QList<TrackTags>& tags) {
            received = tags;
            deliveredOn = QThread::currentThread();
            ++calls;
        });
        QCOMPARE(calls, 0);
        QTRY_COMPARE(calls, 1);
        QCOMPARE(deliveredOn, QThread::currentThread());
        // ffmpeg writes ID3v2.4 in UTF-8 for an MP3.
        QCOMPARE(received, (QList<TrackTags>{TrackTags(), TrackTags{QStringLiteral("Song"), QStringLiteral("Band")},
                                             TrackTags{QStringLiteral("Two"), QStringLiteral("Unknown artist")}}));
        QTest::qWait(300);
        QVERIFY(!goneCalled);
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestTagReader)
#include "test_tagreader.moc"
