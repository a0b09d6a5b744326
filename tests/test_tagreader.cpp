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
    const QString path = fixture(name);
    return makeTone(path, Tone(0.5)) && writeId3Tag(path, id3Tag(frames, version)) ? path : QString();
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
        QTest::addColumn<TrackTags>("expected");
        const QString cafe = QStringLiteral("Café Olé"), bjork = QStringLiteral("Björk");
        const QString cyrillic = QStringLiteral("Добрый день ♫"), tokyo = QStringLiteral("東京事変 🎸");
        QTest::newRow("Latin-1") << "latin1.mp3" << Frames{textFrame("TIT2", cafe), textFrame("TPE1", bjork)} << 3
                                 << TrackTags{cafe, bjork};
        QTest::newRow("UTF-16 with BOM") << "utf16.mp3"
            << Frames{textFrame("TIT2", cyrillic, Encoding::Utf16), textFrame("TPE1", tokyo, Encoding::Utf16)} << 3
            << TrackTags{cyrillic, tokyo};
        QTest::newRow("UTF-8, v2.4, artist first") << "utf8.mp3"
            << Frames{textFrame("TPE1", cyrillic, Encoding::Utf8), textFrame("TIT2", tokyo, Encoding::Utf8)} << 4
            << TrackTags{tokyo, cyrillic};
        const QString other = QStringLiteral("Other");
        QTest::newRow("first of several; TPE2 is no artist") << "several.mp3"
            << Frames{textFrame("TPE2", other), textFrame("TIT2", cafe), textFrame("TPE1", bjork),
                      textFrame("TIT2", other), textFrame("TPE1", other)}
            << 3 << TrackTags{cafe, bjork};
        QTest::newRow("empty and blank are missing") << "blank.mp3"
            << Frames{textFrame("TIT2", QString()), textFrame("TPE1", QStringLiteral("  "), Encoding::Utf8)} << 4
            << TrackTags();
        QTest::newRow("ID3 chunk of a WAV file") << "chunk.wav" << Frames{textFrame("TIT2", cafe)} << 3
                                                 << TrackTags{cafe, QStringLiteral("Unknown artist")};
    }
    void readsFirstTitleAndArtistOfId3Tag()
    {
        QFETCH(QString, name);
        QFETCH(Frames, frames);
        QFETCH(int, version);
        const QString path = toneWithId3(name, frames, version);
        QVERIFY(!path.isEmpty());
        QTEST(readTrackTags(path), "expected");
    }

    // Only ID3v2 gives tags; a picture is read from any container, the first one of several.
    void otherTagsGiveDefaultsButPicturesAreRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("kind");
        QTest::newRow("MP4 atoms and covr") << "atoms.m4a" << "covered";
        QTest::newRow("FLAC comments and picture") << "comments.flac" << "covered";
        QTest::newRow("Ogg comments") << "comments.ogg" << "tagged";
        QTest::newRow("MP3 without a tag") << "plain.mp3" << "plain";
        QTest::newRow("random bytes named .mp3") << "noise.mp3" << "noise";
        QTest::newRow("ID3 APIC, first of two") << "apic.mp3" << "apic";
    }
    void otherTagsGiveDefaultsButPicturesAreRead()
    {
        QFETCH(QString, name);
        QFETCH(QString, kind);
        const QString path = fixture(name);
        const QString red = fixture(QStringLiteral("red.png")), blue = fixture(QStringLiteral("blue.png"));
        QFile redFile(red), blueFile(blue);
        QVERIFY(makePicture(red, 40, 30, 0xff0000) && makePicture(blue, 40, 30, 0x0000ff));
        QVERIFY(redFile.open(QIODevice::ReadOnly) && blueFile.open(QIODevice::ReadOnly));
        Tone tone(0.5);
        if (kind == QLatin1String("covered") || kind == QLatin1String("tagged")) {
            tone.title = QStringLiteral("Song");
            tone.artist = QStringLiteral("Band");
            tone.picturePath = kind == QLatin1String("covered") ? red : QString();
        }
        if (kind == QLatin1String("noise"))
            QVERIFY(writeRandomBytes(path, 64 * 1024));
        else if (kind == QLatin1String("apic"))
            QVERIFY(!toneWithId3(name, {pictureFrame(redFile.readAll()), pictureFrame(blueFile.readAll())}).isEmpty());
        else
            QVERIFY(makeTone(path, tone));
        if (kind != QLatin1String("apic"))
            QCOMPARE(readTrackTags(path), TrackTags());
        const QImage image = readAlbumArt(path);
        QCOMPARE(image.isNull(), kind != QLatin1String("covered") && kind != QLatin1String("apic"));
        if (!image.isNull()) {
            QCOMPARE(image.size(), QSize(40, 30));
            QCOMPARE(QColor(image.pixel(20, 15)), QColor(Qt::red));
        }
    }

    // Later, in the order asked, on the caller's thread, and not at all once the context is gone.
    void readsAsynchronously()
    {
        Tone tagged(0.5); // ffmpeg writes ID3v2.4 in UTF-8
        tagged.title = QStringLiteral("Song");
        tagged.artist = QStringLiteral("Band");
        const QString first = fixture(QStringLiteral("song.mp3"));
        const QString second = toneWithId3(QStringLiteral("second.mp3"), {textFrame("TIT2", QStringLiteral("Two"))});
        QVERIFY(makeTone(first, tagged) && !second.isEmpty());
        const QList<QUrl> urls{QUrl(fixture(QStringLiteral("missing.mp3"))), QUrl::fromLocalFile(first), QUrl(second)};
        auto* gone = new QObject;
        bool goneCalled = false;
        readTrackTagsAsync(urls, gone, [&](const QList<TrackTags>&) { goneCalled = true; });
        delete gone;
        QObject context;
        QList<TrackTags> received;
        QThread* deliveredOn = nullptr;
        readTrackTagsAsync(urls, &context, [&](const QList<TrackTags>& tags) {
            received.append(tags);
            deliveredOn = QThread::currentThread();
        });
        QVERIFY(received.isEmpty());
        QTRY_VERIFY(!received.isEmpty());
        QTest::qWait(300);
        QCOMPARE(deliveredOn, QThread::currentThread());
        QCOMPARE(received, (QList<TrackTags>{TrackTags(), TrackTags{QStringLiteral("Song"), QStringLiteral("Band")},
                                             TrackTags{QStringLiteral("Two"), QStringLiteral("Unknown artist")}}));
        QVERIFY(!goneCalled);
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestTagReader)
#include "test_tagreader.moc"
