#include "store/jsonwriter.h"
#include "store/records.h"
#include "support/testenvironment.h"
#include "themes/defaultlayouts.h"
#include "themes/themedata.h"

#include <QFile>
#include <QGuiApplication>

namespace {

QByteArray dataFile(const char* name)
{
    QFile file(QFINDTESTDATA(QStringLiteral("data/") + QLatin1String(name)));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing test data %s", name);
    return file.readAll();
}

QUuid uuid(const char* text)
{
    return QUuid::fromString(QLatin1String(text));
}

const PlaylistData twoTracks{{{uuid("3f2504e0-4f89-41d3-9a0c-0305e82c3301"), "file:///home/me/Music/My%20Song.mp3",
                               "Tab\there\nnew line", "AC/DC"},
                              {uuid("a1b2c3d4-e5f6-4711-8899-aabbccddeeff"), "file:///tmp/b.flac", "Track",
                               "Unknown artist"}}};
const SettingsData defaults{"mini-blueberry", {"nano-tangerine", "neo-lime", "mini-blueberry", "max-graphite"}, true, false, true, false, true, 0, {}};
const SettingsData unsorted{"neo-lime", {}, false, true, false, true, false, std::nullopt,
                            {{uuid("3F2504E0-4F89-41D3-9A0C-0305E82C3301"), "Road \"trip\" \\ mix"},
                             {QUuid(), "Ünïcödé ♫"}}};

} // namespace

class RecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void filesAreWrittenExactlyAndReadBack();
    void numbersUseTheirShortestExactForm_data();
    void numbersUseTheirShortestExactForm();
    void settingsFileIsRejectedWhole_data();
    void settingsFileIsRejectedWhole();
    void readerIsLenientWhereTheFormatAllows();
    void tracksAndThemesNeedEveryKey();
};

void RecordsTest::filesAreWrittenExactlyAndReadBack()
{
    // Field order, "key" : value, escaped slashes, upper-case ids, no
    // selection written when there is none, [] for empty lists, no newline at the end.
    QCOMPARE(toJson(defaults), dataFile("settings-defaults.json"));
    QCOMPARE(toJson(unsorted), dataFile("settings-no-selection.json"));
    QCOMPARE(toJson(twoTracks), dataFile("playlist-two-tracks.json"));
    QCOMPARE(toJson(PlaylistData{}), dataFile("playlist-empty.json"));
    QCOMPARE(toJson(familyLayout(ThemeFamily::mini)), dataFile("theme-mini.json"));

    QCOMPARE(*settingsDataFromJson(dataFile("settings-no-selection.json")).value, unsorted);
    QCOMPARE(*playlistDataFromJson(dataFile("playlist-two-tracks.json")).value, twoTracks);
    for (ThemeFamily family : {ThemeFamily::mini, ThemeFamily::neo, ThemeFamily::max, ThemeFamily::nano})
        QCOMPARE(*themeDataFromJson(toJson(familyLayout(family))).value, familyLayout(family));
}

void RecordsTest::numbersUseTheirShortestExactForm_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("whole") << 269.0 << QByteArray("269");
    QTest::newRow("half") << 9.5 << QByteArray("9.5");
    QTest::newRow("negative zero") << -0.0 << QByteArray("0");
    QTest::newRow("third") << 1.0 / 3 << QByteArray("0.3333333333333333");
}

void RecordsTest::numbersUseTheirShortestExactForm()
{
    QFETCH(double, number);
    QFETCH(QByteArray, text);
    QCOMPARE(jsonNumber(number), text);
    QCOMPARE(text.toDouble(), number);
}

void RecordsTest::settingsFileIsRejectedWhole_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    for (const char* key : {"currentTheme", "availableThemes", "playsSounds", "superSized", "isFloating",
                            "shuffleTracks", "loopTracks", "playlists"})
        QTest::newRow(key) << "\"" + QByteArray(key) + "\" :" << QByteArray("\"renamed\" :");
    QTest::newRow("bool as string") << QByteArray("true") << QByteArray("\"true\"");
    QTest::newRow("bool as number") << QByteArray("false") << QByteArray("0");
    QTest::newRow("theme list holds a number") << QByteArray("\"neo-lime\"") << QByteArray("42");
    QTest::newRow("fractional index") << QByteArray("\"lastSelectedPlaylistID\" : 0") << QByteArray("\"lastSelectedPlaylistID\" : 0.5");
    QTest::newRow("id with braces") << QByteArray("\"playlists\" : []")
                                    << QByteArray(R"("playlists" : [{"id" : "{3F2504E0-4F89-41D3-9A0C-0305E82C3301}", "name" : "n"}])");
    QTest::newRow("entry is a string") << QByteArray("\"playlists\" : []") << QByteArray("\"playlists\" : [\"x\"]");
    QTest::newRow("not JSON") << QByteArray("{") << QByteArray("{,");
    QTest::newRow("an array") << QByteArray("{") << QByteArray("[{");
}

void RecordsTest::settingsFileIsRejectedWhole()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QByteArray bytes = dataFile("settings-defaults.json");
    QVERIFY(bytes.contains(from));
    const auto decoded = settingsDataFromJson(bytes.replace(from, to));
    QVERIFY(!decoded);
    if (from.endsWith(" :")) // a missing key is named
        QVERIFY2(decoded.error.contains(QString::fromLatin1(from.mid(1, from.size() - 4))), qPrintable(decoded.error));
}

void RecordsTest::readerIsLenientWhereTheFormatAllows()
{
    // Null selection, unknown keys, lower-case ids, any formatting.
    const auto compact = settingsDataFromJson(
        R"({"currentTheme":"x","availableThemes":[],"playsSounds":true,"superSized":false,"isFloating":true,)"
        R"("shuffleTracks":false,"loopTracks":true,"lastSelectedPlaylistID":null,"extra":{"deep":[1]},)"
        R"("playlists":[{"id":"3f2504e0-4f89-41d3-9a0c-0305e82c3301","name":"a","x":1}]})");
    QVERIFY2(compact, qPrintable(compact.error));
    QVERIFY(!compact.value->lastSelectedPlaylistID);
    QCOMPARE(compact.value->playlists.first().id, uuid("3F2504E0-4F89-41D3-9A0C-0305E82C3301"));

    // An absent selection decodes; a large index keeps every bit.
    QByteArray bytes = dataFile("settings-defaults.json");
    QVERIFY(settingsDataFromJson(QByteArray(bytes).replace("\"lastSelectedPlaylistID\" : 0,", "")));
    bytes.replace("\"lastSelectedPlaylistID\" : 0", "\"lastSelectedPlaylistID\" : 9007199254740993");
    QCOMPARE(settingsDataFromJson(bytes).value->lastSelectedPlaylistID, 9007199254740993LL);
}

void RecordsTest::tracksAndThemesNeedEveryKey()
{
    QByteArray noId = dataFile("playlist-two-tracks.json");
    noId.replace("\"id\" : \"A1B2C3D4-E5F6-4711-8899-AABBCCDDEEFF\",", "");
    QVERIFY(!playlistDataFromJson(noId)); // a stored track keeps its id; none is made up
    QVERIFY(!playlistDataFromJson("{}"));

    const QByteArray theme = dataFile("theme-mini.json");
    const QStringList members = QString::fromUtf8(theme).split(QLatin1Char('\n')).filter(QLatin1String(" : "));
    QCOMPARE(members.size(), 50);
    for (const QString& line : members) {
        QByteArray without = theme;
        without.replace(line.toUtf8(), "  \"ignored\" : 1" + QByteArray(line.endsWith(QLatin1Char(',')) ? "," : ""));
        QVERIFY2(!themeDataFromJson(without), qPrintable(line));
    }
    for (const auto& [from, to] : {std::pair{"\"trackTextSize\" : 10", "\"trackTextSize\" : 10.5"},
                                   std::pair{"\"trackTextSize\" : 10", "\"trackTextSize\" : 99999999999"},
                                   std::pair{"\"textReversed\" : true", "\"textReversed\" : 1"},
                                   std::pair{"\"playerWidth\" : 269", "\"playerWidth\" : \"269\""}})
        QVERIFY2(!themeDataFromJson(QByteArray(theme).replace(from, to)), to);

    // A track made in memory gets a fresh random id.
    const Track a = Track::make("file:///a", "A", "B");
    QVERIFY(a.id != Track::make("file:///a", "A", "B").id);
    QCOMPARE(a.id.version(), QUuid::Random);
}

PLINK_TEST_MAIN_WITH(QGuiApplication, RecordsTest)
#include "test_records.moc"
