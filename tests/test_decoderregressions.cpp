// Inputs the decoder fuzzers (fuzz/) found faults with, kept as cases, and the
// fuzzers' whole seed corpus run through the same checks in the ordinary build.
#include "roundtrip.h"

#include "store/records.h"
#include "support/testenvironment.h"
#include "themes/themedata.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

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

} // namespace

class DecoderRegressionsTest : public QObject
{
    Q_OBJECT

private slots:
    void unpairedSurrogateEscapesReadAsReplacementCharacter_data();
    void unpairedSurrogateEscapesReadAsReplacementCharacter();
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

void DecoderRegressionsTest::seedCorpusRoundTrips_data()
{
    QTest::addColumn<QString>("path");
    int count = 0;
    for (const QString& kind : {QStringLiteral("settings"), QStringLiteral("playlist"), QStringLiteral("theme")}) {
        const QDir folder(corpus + u'/' + kind);
        for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) {
            QTest::newRow(qPrintable(kind + u'/' + name)) << folder.filePath(name);
            ++count;
        }
    }
    QVERIFY2(count >= 3, qPrintable(QStringLiteral("no seed files under ") + corpus));
}

// Every seed (and every input a fuzzer once failed on) decodes cleanly or
// fails with a reason, and what decodes survives a write and a second read.
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
    else
        fault = decoderFault(bytes, themeDataFromJson);
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
}

PLINK_TEST_MAIN_WITH(QCoreApplication, DecoderRegressionsTest)
#include "test_decoderregressions.moc"
