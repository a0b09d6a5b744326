#include "playback/albumart.h"
#include "playback/tagreader.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QGuiApplication>
#include <QThread>

using namespace AudioFixtures;
using Frames = QList<Id3Frame>;

namespace {

QString fixture(const QString& name)
{
    return TestEnvironment::documents() + QLatin1Char('/') + name;
}

// A 40×30 picture of one colour; empty if it could not be made.
QByteArray picture(const QString& name, unsigned rgb)
{
    return makePicture(fixture(name), 40, 30, rgb) ? TestFiles::readFile(fixture(name)) : QByteArray();
}

} // namespace

class TestTagReader : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    // Hand-made ID3v2 frames, so that each text encoding is exactly the one
    // asked for; "cover" adds a red and then a blue APIC frame, and the first
    // is the cover. Without frames, the container's own tags hold Song/Band
    // (and the red cover): they are not read, but the cover is.
    void readsTitleArtistAndCover_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<Frames>("frames");
        QTest::addColumn<int>("version");
        QTest::addColumn<bool>("cover");
        QTest::addColumn<TrackTags>("expected");
        const QString cafe = QStringLiteral("Café Olé"), bjork = QStringLiteral("Björk");
        const QString cyrillic = QStringLiteral("Добрый день ♫"), tokyo = QStringLiteral("東京事変 🎸");
        QTest::newRow("Latin-1") << "latin1.mp3" << Frames{textFrame("TIT2", cafe), textFrame("TPE1", bjork)} << 3
                                 << false << TrackTags{cafe, bjork};
        QTest::newRow("UTF-16 with BOM") << "utf16.mp3"
            << Frames{textFrame("TIT2", cyrillic, Encoding::Utf16), textFrame("TPE1", tokyo, Encoding::Utf16)} << 3
            << false << TrackTags{cyrillic, tokyo};
        QTest::newRow("UTF-8 and UTF-16BE, v2.4, artist first") << "utf8.mp3"
            << Frames{textFrame("TPE1", cyrillic, Encoding::Utf8), textFrame("TIT2", tokyo, Encoding::Utf16BE)} << 4
            << false << TrackTags{tokyo, cyrillic};
        const QString other = QStringLiteral("Other");
        QTest::newRow("first of several; TPE2 is no artist") << "several.mp3"
            << Frames{textFrame("TPE2", other), textFrame("TIT2", cafe), textFrame("TPE1", bjork),
                      textFrame("TIT2", other), textFrame("TPE1", other)}
            << 3 << true << TrackTags{cafe, bjork};
        QTest::newRow("empty and blank are missing") << "blank.mp3"
            << Frames{textFrame("TIT2", QString()), textFrame("TPE1", QStringLiteral("  "), Encoding::Utf8)} << 4
            << false << TrackTags();
        QTest::newRow("ID3 chunk of a WAV file") << "chunk.wav" << Frames{textFrame("TIT2", cafe)} << 3 << false
                                                 << TrackTags{cafe, QStringLiteral("Unknown artist")};
        QTest::newRow("MP4 atoms and covr") << "atoms.m4a" << Frames() << 0 << true << TrackTags();
        QTest::newRow("FLAC comments and picture") << "comments.flac" << Frames() << 0 << true << TrackTags();
        QTest::newRow("Ogg comments") << "comments.ogg" << Frames() << 0 << false << TrackTags();
    }
    void readsTitleArtistAndCover()
    {
        QFETCH(QString, name);
        QFETCH(Frames, frames);
        QFETCH(int, version);
        QFETCH(bool, cover);
        const QString path = fixture(name);
        const QByteArray red = picture(QStringLiteral("red.png"), 0xff0000);
        Tone tone(0.5);
        if (frames.isEmpty()) {
            tone.title = QStringLiteral("Song");
            tone.artist = QStringLiteral("Band");
            tone.picturePath = cover ? fixture(QStringLiteral("red.png")) : QString();
        } else if (cover) {
            frames << pictureFrame(red) << pictureFrame(picture(QStringLiteral("blue.png"), 0x0000ff));
        }
        QVERIFY(!red.isEmpty() && makeTone(path, tone));
        QVERIFY(frames.isEmpty() || writeId3Tag(path, id3Tag(frames, version)));
        QTEST(readTrackTags(path), "expected");
        const QImage art = readAlbumArt(path);
        QVERIFY(cover ? art.size() == QSize(40, 30) && QColor(art.pixel(20, 15)) == QColor(Qt::red) : art.isNull());
    }

    // Later, in the order asked, on the caller's thread, and not at all once the context is gone.
    void readsAsynchronously()
    {
        Tone tagged(0.5); // ffmpeg writes ID3v2.4 in UTF-8
        tagged.title = QStringLiteral("Song");
        tagged.artist = QStringLiteral("Band");
        const QString first = fixture(QStringLiteral("song.mp3")), second = fixture(QStringLiteral("second.mp3"));
        QVERIFY(makeTone(first, tagged) && makeTone(second, Tone(0.5)));
        QVERIFY(writeId3Tag(second, id3Tag({textFrame("TIT2", QStringLiteral("Two"))})));
        const QList<QUrl> urls{QUrl(fixture(QStringLiteral("missing.mp3"))), QUrl::fromLocalFile(first), QUrl(second)};
        auto* gone = new QObject;
        readTrackTagsAsync(urls, gone, [](const QList<TrackTags>&) { QFAIL("called after its context was gone"); });
        delete gone;
        QObject context;
        QList<TrackTags> received;
        readTrackTagsAsync(urls, &context, [&](const QList<TrackTags>& tags) {
            QCOMPARE(QThread::currentThread(), context.thread());
            received.append(tags);
        });
        QVERIFY(received.isEmpty());
        QTRY_VERIFY(!received.isEmpty());
        QTest::qWait(300); // nothing more comes
        QCOMPARE(received, (QList<TrackTags>{TrackTags(), TrackTags{QStringLiteral("Song"), QStringLiteral("Band")},
                                             TrackTags{QStringLiteral("Two"), QStringLiteral("Unknown artist")}}));
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, TestTagReader)
#include "test_tagreader.moc"
