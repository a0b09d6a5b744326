// Inputs the decoder fuzzers (fuzz/) found faults with, kept as cases, and the
// fuzzers' whole seed corpus run through the same checks in the ordinary build.
#include "roundtrip.h"

#include "playback/tagreader.h"
#include "store/records.h"
#include "support/testenvironment.h"
#include "themes/themedata.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QUrl>

namespace {

const QString corpus = QStringLiteral(PLINK_FUZZ_CORPUS);

// A settings file and a playlist file with every text member set to @.
const QByteArray settingsWithText = R"({"currentTheme":"@","availableThemes":["@"],"playsSounds":true,
"superSized":false,"isFloating":true,"shuffleTracks":false,"loopTracks":true,
"playlists":[{"id":"3F2504E0-4F89-41D3-9A0C-0305E82C3301","name":"@"}]})";
const QByteArray playlistWithText = R"({"tracks":[{"id":"3F2504E0-4F89-41D3-9A0C-0305E82C3301",
"urlString":"@","trackName":"@","artist":"@"}]})";

QByteArray filled(QByteArray json, const QByteArray& text)
{
    return json.replace('@', text);
}

// An ID3v2.3 tag whose title and artist hold text as UTF-16 units, whatever
// they are (TagLib copies them unpaired), followed by one silent MP3 frame.
QByteArray mp3WithUtf16Tags(const QString& text)
{
    QByteArray frames;
    for (const char* id : {"TIT2", "TPE1"}) {
        QByteArray payload("\x01\xff\xfe", 3); // UTF-16, little-endian mark
        for (const QChar c : text)
            payload += char(c.unicode() & 0xff) + QByteArray(1, char(c.unicode() >> 8));
        const auto size = quint32(payload.size());
        frames += QByteArray(id) + char(size >> 24) + char(size >> 16) + char(size >> 8) + char(size)
            + QByteArray(2, '\0') + payload;
    }
    const auto size = quint32(frames.size());
    QByteArray tag("ID3\x03\x00\x00", 6);
    for (int shift : {21, 14, 7, 0})
        tag += char((size >> shift) & 0x7f);
    return tag + frames + QByteArray("\xff\xfb\x90\x00", 4) + QByteArray(413, '\0');
}

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
    void tagSeedsReadAsMade_data();
    void tagSeedsReadAsMade();
    void seedCorpusRoundTrips_data();
    void seedCorpusRoundTrips();
};

void DecoderRegressionsTest::unpairedSurrogateEscapesReadAsReplacementCharacter_data()
{
    QTest::addColumn<QByteArray>("escaped"); // a JSON string's content
    QTest::addColumn<QString>("expected");

    const QChar bad = QChar::ReplacementCharacter;
    const QString note = QString::fromUtf8("\xF0\x9F\x8E\xB5"); // U+1F3B5, a surrogate pair in memory
    QTest::newRow("high half alone") << QByteArray(R"(neo\ud800 me)") << QStringLiteral("neo%1 me").arg(bad);
    QTest::newRow("low half alone") << QByteArray(R"(\udfb5x)") << QString(bad) + u'x';
    QTest::newRow("high half at the end") << QByteArray(R"(a\ud83c)") << QStringLiteral("a") + bad;
    QTest::newRow("halves in reverse order") << QByteArray(R"(\udfb5\ud83c)") << QString(bad) + bad;
    QTest::newRow("two highs, then a low") << QByteArray(R"(\ud83c\ud83c\udfb5)") << bad + note;
    QTest::newRow("escaped pair kept") << QByteArray(R"(\ud83c\udfb5)") << note;
    QTest::newRow("raw pair kept") << note.toUtf8() << note;
}

// Half a surrogate pair cannot be written as UTF-8: it used to be saved as
// '?', so reading and saving a file changed it behind the user's back.
void DecoderRegressionsTest::unpairedSurrogateEscapesReadAsReplacementCharacter()
{
    QFETCH(QByteArray, escaped);
    QFETCH(QString, expected);

    const QByteArray settingsFile = filled(settingsWithText, escaped);
    const Decoded<SettingsData> settings = settingsDataFromJson(settingsFile);
    QVERIFY2(settings, qPrintable(settings.error));
    QCOMPARE(settings.value->currentTheme, expected);
    QCOMPARE(settings.value->availableThemes, QStringList{expected});
    QCOMPARE(settings.value->playlists.value(0).name, expected);
    QCOMPARE(decoderFault(settingsFile, settingsDataFromJson), QString());

    const QByteArray playlistFile = filled(playlistWithText, escaped);
    const Decoded<PlaylistData> playlist = playlistDataFromJson(playlistFile);
    QVERIFY2(playlist, qPrintable(playlist.error));
    const Track track = playlist.value->tracks.value(0);
    QCOMPARE(track.urlString, expected);
    QCOMPARE(track.trackName, expected);
    QCOMPARE(track.artist, expected);
    QCOMPARE(decoderFault(playlistFile, playlistDataFromJson), QString());
}

void DecoderRegressionsTest::tagTextWithHalfASurrogatePairSurvivesPlaylistFile_data()
{
    QTest::addColumn<QString>("text"); // as the tag holds it
    QTest::addColumn<QString>("expected");

    const QChar bad = QChar::ReplacementCharacter;
    const QString note = QString::fromUtf8("\xF0\x9F\x8E\xB5");
    QTest::newRow("low half alone") << QStringLiteral("A%1B").arg(QChar(0xddff)) << QStringLiteral("A%1B").arg(bad);
    QTest::newRow("high half at the end") << QStringLiteral("Band") + QChar(0xd83c) << QStringLiteral("Band") + bad;
    QTest::newRow("halves in reverse order") << QString(QChar(0xdfb5)) + QChar(0xd83c) + u'!'
                                             << QString(bad) + bad + u'!';
    QTest::newRow("whole pair kept") << QStringLiteral("Song ") + note << QStringLiteral("Song ") + note;
}

// A UTF-16 tag can hold half a surrogate pair; the track made from it was
// saved with '?' there and so came back from its playlist file changed.
void DecoderRegressionsTest::tagTextWithHalfASurrogatePairSurvivesPlaylistFile()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);

    const QString path = TestEnvironment::documents() + QStringLiteral("/tagged.mp3");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(mp3WithUtf16Tags(text));
    file.close();

    const Track track = trackFromFile(path);
    QCOMPARE(track.trackName, expected);
    QCOMPARE(track.artist, expected);
    QVERIFY(survivesPlaylistFile(track));
}

void DecoderRegressionsTest::tagSeedsReadAsMade_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("artist");

    const QString track = QStringLiteral("Track");
    const QString unknown = QStringLiteral("Unknown artist");
    const auto row = [](const char* name, const QString& title, const QString& artist) {
        QTest::newRow(name) << QString::fromLatin1(name) << title << artist;
    };
    row("mp3-v23-latin1.mp3", QStringLiteral("Song"), QStringLiteral("Band"));
    row("mp3-v23-utf16.mp3", QStringLiteral("Jóga"), QStringLiteral("Björk ♫"));
    row("mp3-v24-utf8.mp3", QString::fromUtf8("Ünïcödé \xF0\x9F\x8E\xB5"), QStringLiteral("AC/DC"));
    row("mp3-unsync.mp3", QStringLiteral("Aÿb"), QStringLiteral("X"));
    row("wav-id3-chunk.wav", QStringLiteral("Wave song"), QStringLiteral("Wave band"));
    row("aiff-id3-chunk.aiff", QStringLiteral("Aiff song"), QStringLiteral("Aiff band"));
    row("mp3-blank-frames.mp3", track, unknown);
    row("mp3-no-tag.mp3", track, unknown);
    row("mp4-head.m4a", track, unknown);
    row("flac-head.flac", track, unknown);
}

// The hand-made tag seeds reach the reader's paths they were made for, so
// that the fuzzer starts from real tags in every container.
void DecoderRegressionsTest::tagSeedsReadAsMade()
{
    QFETCH(QString, name);
    QFETCH(QString, title);
    QFETCH(QString, artist);
    const QString path = corpus + QStringLiteral("/tags/") + name;
    QVERIFY2(QFile::exists(path), qPrintable(path));
    const TrackTags tags = readTrackTags(path);
    QCOMPARE(tags.title, title);
    QCOMPARE(tags.artist, artist);
}

void DecoderRegressionsTest::seedCorpusRoundTrips_data()
{
    QTest::addColumn<QString>("path");
    int count = 0;
    for (const QString& kind : {QStringLiteral("settings"), QStringLiteral("playlist"), QStringLiteral("theme"),
                                QStringLiteral("tags")}) {
        const QDir folder(corpus + u'/' + kind);
        for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) {
            QTest::newRow(qPrintable(kind + u'/' + name)) << folder.filePath(name);
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
    QFile file(path);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(path));
    const QByteArray bytes = file.readAll();
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
