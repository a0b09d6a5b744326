// Inputs the decoder fuzzers (fuzz/) found faults with, and their whole seed
// corpus run through the same checks in the ordinary build.
#include "roundtrip.h"

#include "playback/tagreader.h"
#include "store/records.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"
#include "themes/themedata.h"

#include <QCoreApplication>
#include <QUrl>

namespace {

// The tag reader's answer as the playlist editor turns it into a track.
Track trackFromFile(const QString& path)
{
    const TrackTags tags = readTrackTags(path);
    return Track::make(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded), tags.title, tags.artist);
}

bool survivesPlaylistFile(const Track& track)
{
    const PlaylistData playlist{{track}};
    const Decoded<PlaylistData> saved = playlistDataFromJson(toJson(playlist));
    return saved && *saved.value == playlist;
}

} // namespace

class DecoderRegressionsTest : public QObject
{
    Q_OBJECT

private slots:
    void loneSurrogatesReadAsReplacementCharacter_data();
    void loneSurrogatesReadAsReplacementCharacter();
    void seedCorpusRoundTrips_data();
    void seedCorpusRoundTrips();
};

void DecoderRegressionsTest::loneSurrogatesReadAsReplacementCharacter_data()
{
    QTest::addColumn<QString>("text"); // UTF-16 units, whatever they are
    QTest::addColumn<QString>("expected");
    const QChar bad = QChar::ReplacementCharacter, high(0xd83c), low(0xdfb5);
    const QString note = QString::fromUtf8("\xF0\x9F\x8E\xB5"); // U+1F3B5, the pair high + low
    QTest::newRow("high half at the end") << QStringLiteral("Band") + high << QStringLiteral("Band") + bad;
    QTest::newRow("halves in reverse order") << QString(low) + high + u'!' << QString(bad) + bad + u'!';
    QTest::newRow("two highs, then a low") << QString(high) + high + low << bad + note;
    QTest::newRow("whole pair kept") << QStringLiteral("Song ") + note << QStringLiteral("Song ") + note;
}

// Half a surrogate pair cannot be written as UTF-8: it used to be saved as
// '?', so reading and saving a file changed it behind the user's back. It
// comes as a JSON escape in our files, and as UTF-16 units in a tag.
void DecoderRegressionsTest::loneSurrogatesReadAsReplacementCharacter()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QByteArray escaped;
    for (const QChar c : text)
        escaped += c.unicode() < 0x80 ? QByteArray(1, char(c.unicode()))
                                      : "\\u" + QByteArray::number(c.unicode(), 16).rightJustified(4, '0');
    const QByteArray playlistFile = R"({"tracks":[{"id":"3F2504E0-4F89-41D3-9A0C-0305E82C3301",
"urlString":"file:///a.mp3","trackName":")" + escaped + R"(","artist":"x"}]})";
    const Decoded<PlaylistData> playlist = playlistDataFromJson(playlistFile);
    QVERIFY2(playlist, qPrintable(playlist.error));
    QCOMPARE(playlist.value->tracks.value(0).trackName, expected);
    QCOMPARE(decoderFault(playlistFile, playlistDataFromJson), QString());

    using namespace AudioFixtures;
    const QString path = TestEnvironment::documents() + QStringLiteral("/tagged.mp3");
    // The tag, then one silent MP3 frame.
    QVERIFY(TestFiles::writeFile(path, id3Tag({textFrame("TIT2", text, Encoding::Utf16),
                                               textFrame("TPE1", text, Encoding::Utf16)})
                                           + QByteArray("\xff\xfb\x90\x00", 4) + QByteArray(413, '\0')));
    const Track track = trackFromFile(path);
    QCOMPARE(track.trackName, expected);
    QCOMPARE(track.artist, expected);
    QVERIFY(survivesPlaylistFile(track));
}

void DecoderRegressionsTest::seedCorpusRoundTrips_data()
{
    QTest::addColumn<QString>("path");
    const QString corpus = QStringLiteral(PLINK_FUZZ_CORPUS);
    int count = 0;
    for (const char* kind : {"settings", "playlist", "theme", "tags"}) {
        const QDir folder(corpus + u'/' + QLatin1String(kind));
        for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) {
            QTest::newRow(qPrintable(folder.dirName() + u'/' + name)) << folder.filePath(name);
            ++count;
        }
    }
    QVERIFY2(count >= 4, qPrintable(QStringLiteral("no seed files under ") + corpus));
}

// Every seed (and every input a fuzzer once failed on) decodes cleanly or
// fails with a reason, and what decodes survives a write and a second read;
// an audio file's tags survive as a track of a playlist file.
void DecoderRegressionsTest::seedCorpusRoundTrips()
{
    QFETCH(QString, path);
    const QByteArray bytes = TestFiles::readFile(path);
    QVERIFY2(!bytes.isEmpty(), qPrintable(path));
    const QString kind = QFileInfo(path).dir().dirName();
    QString fault;
    if (kind == u"settings")
        fault = decoderFault(bytes, settingsDataFromJson);
    else if (kind == u"playlist")
        fault = decoderFault(bytes, playlistDataFromJson);
    else if (kind == u"theme")
        fault = decoderFault(bytes, themeDataFromJson);
    else if (!survivesPlaylistFile(trackFromFile(path)))
        fault = QStringLiteral("the track made from its tags changes in a playlist file");
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

PLINK_TEST_MAIN_WITH(QCoreApplication, DecoderRegressionsTest)
#include "test_decoderregressions.moc"
