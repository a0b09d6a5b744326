// Inputs the decoder fuzzers (fuzz/) found faults with, kept as cases, and the
// fuzzers' whole seed corpus run through the same checks in the ordinary build.
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

const QString corpus = QStringLiteral(PLINK_FUZZ_CORPUS);
const QChar bad = QChar::ReplacementCharacter;
const QString note = QString::fromUtf8("\xF0\x9F\x8E\xB5"); // U+1F3B5, a surrogate pair in memory

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
    void unpairedSurrogateEscapesReadAsReplacementCharacter_data();
    void unpairedSurrogateEscapesReadAsReplacementCharacter();
    void tagTextWithHalfASurrogatePairSurvivesPlaylistFile_data();
    void tagTextWithHalfASurrogatePairSurvivesPlaylistFile();
    void seedCorpusRoundTrips_data();
    void seedCorpusRoundTrips();
};

void DecoderRegressionsTest::unpairedSurrogateEscapesReadAsReplacementCharacter_data()
{
    QTest::addColumn<QByteArray>("escaped"); // a JSON string's content
    QTest::addColumn<QString>("expected");
    QTest::newRow("high half alone") << QByteArray(R"(neo\ud800 me)") << QStringLiteral("neo%1 me").arg(bad);
    QTest::newRow("low half alone") << QByteArray(R"(\udfb5x)") << QString(bad) + u'x';
    QTest::newRow("halves in reverse order") << QByteArray(R"(\udfb5\ud83c)") << QString(bad) + bad;
    QTest::newRow("two highs, then a low") << QByteArray(R"(\ud83c\ud83c\udfb5)") << bad + note;
    QTest::newRow("escaped pair kept") << QByteArray(R"(\ud83c\udfb5)") << note;
}

// Half a surrogate pair cannot be written as UTF-8: it used to be saved as
// '?', so reading and saving a file changed it behind the user's back.
void DecoderRegressionsTest::unpairedSurrogateEscapesReadAsReplacementCharacter()
{
    QFETCH(QByteArray, escaped);
    QFETCH(QString, expected);

    const QByteArray settingsFile = R"({"currentTheme":"mini-blueberry","availableThemes":[],"playsSounds":true,
"superSized":false,"isFloating":true,"shuffleTracks":false,"loopTracks":true,
"playlists":[{"id":"3F2504E0-4F89-41D3-9A0C-0305E82C3301","name":")" + escaped + R"("}]})";
    const Decoded<SettingsData> settings = settingsDataFromJson(settingsFile);
    QVERIFY2(settings, qPrintable(settings.error));
    QCOMPARE(settings.value->playlists.value(0).name, expected);
    QCOMPARE(decoderFault(settingsFile, settingsDataFromJson), QString());

    const QByteArray playlistFile = R"({"tracks":[{"id":"3F2504E0-4F89-41D3-9A0C-0305E82C3301",
"urlString":"file:///a.mp3","trackName":")" + escaped + R"(","artist":"x"}]})";
    const Decoded<PlaylistData> playlist = playlistDataFromJson(playlistFile);
    QVERIFY2(playlist, qPrintable(playlist.error));
    QCOMPARE(playlist.value->tracks.value(0).trackName, expected);
    QCOMPARE(decoderFault(playlistFile, playlistDataFromJson), QString());
}

void DecoderRegressionsTest::tagTextWithHalfASurrogatePairSurvivesPlaylistFile_data()
{
    QTest::addColumn<QString>("text"); // as the tag holds it
    QTest::addColumn<QString>("expected");
    QTest::newRow("low half alone") << QStringLiteral("A%1B").arg(QChar(0xddff)) << QStringLiteral("A%1B").arg(bad);
    QTest::newRow("high half at the end") << QStringLiteral("Band") + QChar(0xd83c) << QStringLiteral("Band") + bad;
    QTest::newRow("whole pair kept") << QStringLiteral("Song ") + note << QStringLiteral("Song ") + note;
}

// A UTF-16 tag can hold half a surrogate pair (TagLib copies it unpaired);
// the track made from it was saved with '?' there and came back changed.
void DecoderRegressionsTest::tagTextWithHalfASurrogatePairSurvivesPlaylistFile()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
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
