#include "store/jsonwriter.h"
#include "store/records.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"
#include "themes/defaultlayouts.h"
#include "themes/themedata.h"

#include <QGuiApplication>
#include <QSet>

namespace {

QByteArray dataFile(const QString& name)
{
    return TestFiles::readFile(QFINDTESTDATA(QStringLiteral("data/") + name));
}

const PlaylistData twoTracks{{{QUuid("3f2504e0-4f89-41d3-9a0c-0305e82c3301"), "file:///home/me/Music/My%20Song.mp3",
                               "Tab\there\nnew line", "AC/DC"},
                              {QUuid("a1b2c3d4-e5f6-4711-8899-aabbccddeeff"), "file:///tmp/b.flac", "Track",
                               "Unknown artist"}}};
const SettingsData defaults{"mini-blueberry", {"nano-tangerine", "neo-lime", "mini-blueberry", "max-graphite"}, true, false, true, false, true, 0, {}};
const SettingsData unsorted{"neo-lime", {}, false, true, false, true, false, std::nullopt,
                            {{QUuid("3F2504E0-4F89-41D3-9A0C-0305E82C3301"), "Road \"trip\" \\ mix"},
                             {QUuid(), "Ünïcödé ♫"}}};

// The decoder's error for bytes of the named file's kind; nothing when they decode.
std::optional<QString> decodeFailure(const QString& file, const QByteArray& bytes)
{
    const auto failure = [](const auto& decoded) { return decoded ? std::nullopt : std::optional(decoded.error); };
    return file.startsWith(u"settings") ? failure(settingsDataFromJson(bytes))
        : file.startsWith(u"theme")     ? failure(themeDataFromJson(bytes))
                                        : failure(playlistDataFromJson(bytes));
}

} // namespace

class RecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void filesAreWrittenExactlyAndReadBack();
    void filesDecodeOnlyWhenWhole_data();
    void filesDecodeOnlyWhenWhole();
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
    // Numbers in their shortest exact form.
    QCOMPARE(jsonNumber(1.0 / 3), QByteArray("0.3333333333333333"));
    QCOMPARE(jsonNumber(-0.0), QByteArray("0"));
    QCOMPARE(jsonNumber(100000), QByteArray("100000"));
    QCOMPARE(jsonNumber(-0.0001), QByteArray("-0.0001"));
    QCOMPARE(jsonNumber(1e21), QByteArray("1e+21"));
    QCOMPARE(jsonNumber(-1e-300), QByteArray("-1e-300"));

    // A track made in memory gets a fresh random id.
    const Track a = Track::make("file:///a", "A", "B");
    QVERIFY(a.id != Track::make("file:///a", "A", "B").id);
    QCOMPARE(a.id.version(), QUuid::Random);
}

void RecordsTest::filesDecodeOnlyWhenWhole_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    QTest::addColumn<bool>("decodes");
    // Every member is required but the settings' selection; a stored track keeps its id.
    for (const char* file : {"settings-defaults.json", "theme-mini.json", "playlist-two-tracks.json"}) {
        QSet<QByteArray> keys;
        for (const QByteArray& line : dataFile(file).split('\n')) {
            const QByteArray key = line.left(line.indexOf("\" :") + 3).trimmed();
            if (key.size() > 3 && !key.contains("lastSelectedPlaylistID") && !keys.contains(key)) {
                keys.insert(key);
                QTest::addRow("%s %s", file, key.constData()) << file << key << QByteArray("\"renamed\" :") << false;
            }
        }
    }
    const auto row = [](const char* name, const char* file, const char* from, const char* to, bool decodes = false) {
        QTest::newRow(name) << QString::fromLatin1(file) << QByteArray(from) << QByteArray(to) << decodes;
    };
    const char* settings = "settings-defaults.json";
    const char* theme = "theme-mini.json";
    row("no selection", settings, "\"lastSelectedPlaylistID\" : 0,", "", true);
    row("null selection", settings, "\"lastSelectedPlaylistID\" : 0", "\"lastSelectedPlaylistID\" : null", true);
    row("unknown keys", settings, "\"playsSounds\"", "\"extra\" : {\"deep\" : [1]}, \"playsSounds\"", true);
    row("lower-case id", "playlist-two-tracks.json", "A1B2C3D4-E5F6-4711-8899-AABBCCDDEEFF",
        "a1b2c3d4-e5f6-4711-8899-aabbccddeeff", true);
    row("compact", "playlist-empty.json", "\n  ", "", true);
    row("bool as string", settings, "true", "\"true\"");
    row("theme list holds a number", settings, "\"neo-lime\"", "42");
    row("fractional index", settings, "\"lastSelectedPlaylistID\" : 0", "\"lastSelectedPlaylistID\" : 0.5");
    row("id with braces", settings, "\"playlists\" : []",
        R"("playlists" : [{"id" : "{3F2504E0-4F89-41D3-9A0C-0305E82C3301}", "name" : "n"}])");
    row("entry is a string", settings, "\"playlists\" : []", "\"playlists\" : [\"x\"]");
    row("not JSON", settings, "{", "{,");
    row("an array", settings, "{", "[{");
    row("fractional text size", theme, "\"trackTextSize\" : 10", "\"trackTextSize\" : 10.5");
    row("text size beyond int", theme, "\"trackTextSize\" : 10", "\"trackTextSize\" : 99999999999");
    row("flag as number", theme, "\"textReversed\" : true", "\"textReversed\" : 1");
    row("width as string", theme, "\"playerWidth\" : 269", "\"playerWidth\" : \"269\"");
}

void RecordsTest::filesDecodeOnlyWhenWhole()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QFETCH(bool, decodes);
    QByteArray bytes = dataFile(file);
    QVERIFY(bytes.contains(from));
    const std::optional<QString> error = decodeFailure(file, bytes.replace(from, to));
    QVERIFY2(error.has_value() != decodes, qPrintable(error.value_or(QString())));
    if (to == "\"renamed\" :") // a missing key is named
        QVERIFY2(error->contains(QString::fromLatin1(from.mid(1, from.size() - 4))), qPrintable(*error));
}

PLINK_TEST_MAIN_WITH(QGuiApplication, RecordsTest)
#include "test_records.moc"
