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

PlaylistData twoTracks()
{
    return {{{uuid("3f2504e0-4f89-41d3-9a0c-0305e82c3301"), QStringLiteral("file:///home/me/Music/My%20Song.mp3"),
              QStringLiteral("Tab\there\nnew line"), QStringLiteral("AC/DC")},
             {uuid("a1b2c3d4-e5f6-4711-8899-aabbccddeeff"), QStringLiteral("file:///tmp/b.flac"),
              QStringLiteral("Track"), QStringLiteral("Unknown artist")}}};
}

SettingsData unsortedSettings()
{
    return {QStringLiteral("neo-lime"), {}, false, true, false, true, false, std::nullopt,
            {{uuid("3F2504E0-4F89-41D3-9A0C-0305E82C3301"), QStringLiteral("Road \"trip\" \\ mix")},
             {QUuid(), QStringLiteral("Ünïcödé ♫")}}};
}

} // namespace

class RecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void writtenBytesMatchTheFileFormat_data();
    void writtenBytesMatchTheFileFormat();
    void filesReadBackToTheSameRecords();
    void numbersUseTheirShortestExactForm_data();
    void numbersUseTheirShortestExactForm();
    void settingsDecodeFailsWithoutARequiredKey_data();
    void settingsDecodeFailsWithoutARequiredKey();
    void settingsDecodeFailsOnAWrongType_data();
    void settingsDecodeFailsOnAWrongType();
    void lenientWhereTheFormatAllowsIt();
    void tracksNeedTheirStoredId();
    void themeFileNeedsEveryKeyWithItsType();
};

void RecordsTest::writtenBytesMatchTheFileFormat_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("first-start settings")
        << toJson(SettingsData{QStringLiteral("mini-blueberry"),
                               {QStringLiteral("nano-tangerine"), QStringLiteral("neo-lime"),
                                QStringLiteral("mini-blueberry"), QStringLiteral("max-graphite")},
                               true, false, true, false, true, 0, {}})
        << dataFile("settings-defaults.json");
    QTest::newRow("no selection, escapes, upper-case ids") << toJson(unsortedSettings())
                                                           << dataFile("settings-no-selection.json");
    QTest::newRow("playlist with tracks") << toJson(twoTracks()) << dataFile("playlist-two-tracks.json");
    QTest::newRow("new playlist") << toJson(PlaylistData{}) << dataFile("playlist-empty.json");
    QTest::newRow("mini theme") << toJson(familyLayout(ThemeFamily::mini)) << dataFile("theme-mini.json");
}

void RecordsTest::writtenBytesMatchTheFileFormat()
{
    QFETCH(QByteArray, written);
    QFETCH(QByteArray, expected);
    QCOMPARE(written, expected);
}

void RecordsTest::filesReadBackToTheSameRecords()
{
    const auto playlist = playlistDataFromJson(dataFile("playlist-two-tracks.json"));
    QVERIFY2(playlist, qPrintable(playlist.error));
    QCOMPARE(*playlist.value, twoTracks());

    const auto settings = settingsDataFromJson(dataFile("settings-no-selection.json"));
    QVERIFY2(settings, qPrintable(settings.error));
    QCOMPARE(*settings.value, unsortedSettings());

    const auto theme = themeDataFromJson(dataFile("theme-mini.json"));
    QVERIFY2(theme, qPrintable(theme.error));
    QCOMPARE(*theme.value, familyLayout(ThemeFamily::mini));

    // Every family survives a round trip through its file.
    for (ThemeFamily family : {ThemeFamily::neo, ThemeFamily::max, ThemeFamily::nano}) {
        const auto again = themeDataFromJson(toJson(familyLayout(family)));
        QVERIFY(again);
        QCOMPARE(*again.value, familyLayout(family));
    }
}

void RecordsTest::numbersUseTheirShortestExactForm_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("whole") << 269.0 << QByteArray("269");
    QTest::newRow("half") << 9.5 << QByteArray("9.5");
    QTest::newRow("zero") << 0.0 << QByteArray("0");
    QTest::newRow("negative zero") << -0.0 << QByteArray("0");
    QTest::newRow("negative") << -117.25 << QByteArray("-117.25");
    QTest::newRow("tenth") << 0.1 << QByteArray("0.1");
    QTest::newRow("third") << 1.0 / 3 << QByteArray("0.3333333333333333");
}

void RecordsTest::numbersUseTheirShortestExactForm()
{
    QFETCH(double, number);
    QFETCH(QByteArray, text);
    QCOMPARE(jsonNumber(number), text);
    QCOMPARE(text.toDouble(), number);
}

void RecordsTest::settingsDecodeFailsWithoutARequiredKey_data()
{
    QTest::addColumn<QString>("key");
    for (const char* key : {"currentTheme", "availableThemes", "playsSounds", "superSized", "isFloating",
                            "shuffleTracks", "loopTracks", "playlists"})
        QTest::newRow(key) << QString::fromLatin1(key);
}

void RecordsTest::settingsDecodeFailsWithoutARequiredKey()
{
    QFETCH(QString, key);
    QByteArray bytes = dataFile("settings-defaults.json");
    const QByteArray member = "\"" + key.toLatin1() + "\" :";
    bytes.replace(member, "\"renamed-" + key.toLatin1() + "\" :");
    const auto decoded = settingsDataFromJson(bytes);
    QVERIFY(!decoded);
    QVERIFY2(decoded.error.contains(key), qPrintable(decoded.error));
}

void RecordsTest::settingsDecodeFailsOnAWrongType_data()
{
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::newRow("theme as number") << QByteArray("\"mini-blueberry\",") << QByteArray("7,");
    QTest::newRow("bool as string") << QByteArray("\"playsSounds\" : true") << QByteArray("\"playsSounds\" : \"true\"");
    QTest::newRow("bool as number") << QByteArray("\"loopTracks\" : true") << QByteArray("\"loopTracks\" : 1");
    QTest::newRow("theme list holds a number") << QByteArray("\"neo-lime\"") << QByteArray("42");
    QTest::newRow("index is fractional") << QByteArray("\"lastSelectedPlaylistID\" : 0")
                                         << QByteArray("\"lastSelectedPlaylistID\" : 0.5");
    QTest::newRow("index is text") << QByteArray("\"lastSelectedPlaylistID\" : 0")
                                   << QByteArray("\"lastSelectedPlaylistID\" : \"0\"");
    QTest::newRow("playlists is an object") << QByteArray("\"playlists\" : []") << QByteArray("\"playlists\" : {}");
    QTest::newRow("playlist entry is a string") << QByteArray("\"playlists\" : []")
                                                << QByteArray("\"playlists\" : [\"x\"]");
    QTest::newRow("playlist id is not a UUID")
        << QByteArray("\"playlists\" : []") << QByteArray("\"playlists\" : [{\"id\" : \"nope\", \"name\" : \"n\"}]");
    QTest::newRow("playlist id has braces")
        << QByteArray("\"playlists\" : []")
        << QByteArray("\"playlists\" : [{\"id\" : \"{3F2504E0-4F89-41D3-9A0C-0305E82C3301}\", \"name\" : \"n\"}]");
    QTest::newRow("not JSON") << QByteArray("{") << QByteArray("{,");
    QTest::newRow("an array, not an object") << QByteArray("{") << QByteArray("[{");
    QTest::newRow("empty") << dataFile("settings-defaults.json") << QByteArray();
}

void RecordsTest::settingsDecodeFailsOnAWrongType()
{
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QByteArray bytes = dataFile("settings-defaults.json");
    QVERIFY(bytes.contains(from));
    bytes.replace(from, to);
    const auto decoded = settingsDataFromJson(bytes);
    QVERIFY(!decoded);
    QVERIFY(!decoded.error.isEmpty());
}

void RecordsTest::lenientWhereTheFormatAllowsIt()
{
    // Absent or null selection, unknown keys, lower-case ids, any formatting.
    const QByteArray compact =
        R"({"currentTheme":"x","availableThemes":[],"playsSounds":true,"superSized":false,)"
        R"("isFloating":true,"shuffleTracks":false,"loopTracks":true,"lastSelectedPlaylistID":null,)"
        R"("extra":{"deep":[1,2]},"playlists":[{"id":"3f2504e0-4f89-41d3-9a0c-0305e82c3301","name":"a","x":1}]})";
    const auto decoded = settingsDataFromJson(compact);
    QVERIFY2(decoded, qPrintable(decoded.error));
    QVERIFY(!decoded.value->lastSelectedPlaylistID);
    QCOMPARE(decoded.value->playlists.size(), 1);
    QCOMPARE(decoded.value->playlists.first().id, uuid("3F2504E0-4F89-41D3-9A0C-0305E82C3301"));

    QByteArray absent = dataFile("settings-defaults.json");
    absent.replace("\"lastSelectedPlaylistID\" : 0,", "");
    QVERIFY(settingsDataFromJson(absent));

    // A large index keeps every bit; a whole number written with a fraction is accepted.
    QByteArray big = dataFile("settings-defaults.json");
    big.replace("\"lastSelectedPlaylistID\" : 0", "\"lastSelectedPlaylistID\" : 9007199254740993");
    QCOMPARE(settingsDataFromJson(big).value->lastSelectedPlaylistID, 9007199254740993LL);
    big.replace("9007199254740993", "-3.0");
    QCOMPARE(settingsDataFromJson(big).value->lastSelectedPlaylistID, -3LL);

    // Two playlists of the same name are distinct entries.
    SettingsData twins = unsortedSettings();
    twins.playlists = {{QUuid::createUuid(), QStringLiteral("Untitled")}, {QUuid::createUuid(), QStringLiteral("Untitled")}};
    QCOMPARE(settingsDataFromJson(toJson(twins)).value->playlists, twins.playlists);
    QVERIFY(twins.playlists.at(0) != twins.playlists.at(1));
}

void RecordsTest::tracksNeedTheirStoredId()
{
    QByteArray bytes = dataFile("playlist-two-tracks.json");
    bytes.replace("\"id\" : \"A1B2C3D4-E5F6-4711-8899-AABBCCDDEEFF\",", "");
    const auto decoded = playlistDataFromJson(bytes);
    QVERIFY(!decoded);
    QVERIFY2(decoded.error.contains(QLatin1String("\"id\"")), qPrintable(decoded.error));

    QVERIFY(!playlistDataFromJson("{\"tracks\" : [{\"id\" : \"3F2504E0-4F89-41D3-9A0C-0305E82C3301\", "
                                  "\"urlString\" : \"file:\\/\\/\\/a\", \"trackName\" : 5, \"artist\" : \"b\"}]}"));
    QVERIFY(!playlistDataFromJson("{}"));
    QVERIFY(playlistDataFromJson("{\"tracks\":[]}"));

    // A track made in memory gets a fresh random id.
    const Track a = Track::make(QStringLiteral("file:///a"), QStringLiteral("A"), QStringLiteral("B"));
    const Track b = Track::make(QStringLiteral("file:///a"), QStringLiteral("A"), QStringLiteral("B"));
    QVERIFY(!a.id.isNull());
    QVERIFY(a.id != b.id);
    QCOMPARE(a.id.version(), QUuid::Random);
}

void RecordsTest::themeFileNeedsEveryKeyWithItsType()
{
    const QByteArray good = dataFile("theme-mini.json");
    // Every single key is required.
    const QStringList keys = QString::fromUtf8(good).split(QLatin1Char('\n')).filter(QLatin1String(" : "));
    QCOMPARE(keys.size(), 50);
    for (const QString& line : keys) {
        QByteArray without = good;
        without.replace(line.toUtf8(), "  \"ignored\" : 1" + QByteArray(line.endsWith(QLatin1Char(',')) ? "," : ""));
        QVERIFY2(!themeDataFromJson(without), qPrintable(line));
    }
    QByteArray textSize = good;
    textSize.replace("\"trackTextSize\" : 10", "\"trackTextSize\" : 10.5");
    QVERIFY(!themeDataFromJson(textSize));
    textSize.replace("10.5", "99999999999");
    QVERIFY(!themeDataFromJson(textSize));
    QByteArray reversed = good;
    reversed.replace("\"textReversed\" : true", "\"textReversed\" : 1");
    QVERIFY(!themeDataFromJson(reversed));
    QByteArray width = good;
    width.replace("\"playerWidth\" : 269", "\"playerWidth\" : \"269\"");
    QVERIFY(!themeDataFromJson(width));
}

PLINK_TEST_MAIN_WITH(QGuiApplication, RecordsTest)
#include "test_records.moc"
