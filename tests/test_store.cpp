// The store and its themes; small pictures of one colour stand in for the real ones.
#include "store/config.h"
#include "store/fileio.h"
#include "store/jsonreader.h"
#include "store/jsonwriter.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"
#include "themes/defaultlayouts.h"

#include <QGuiApplication>
#include <QRandomGenerator>
#include <QSignalSpy>

#include <algorithm>
#include <csignal>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace TestFiles;

namespace {

const SettingsData defaults{"mini-blueberry", Config::defaultThemeCatalogue(), true, false, true, false, true, 0, {}};
const QByteArray emptyPlaylist("{\n  \"tracks\" : []\n}");

QByteArray dataFile(const QString& name)
{
    return readFile(QFINDTESTDATA("data/" + name));
}

QString playlistsFolder()
{
    return TestEnvironment::documents() + "/plinkBox-1/Playlists";
}

struct Edit { QString file; QByteArray from, to; bool decodes = false; };

// A move of the next/previous rules, in a playlist of count tracks (-1: no file).
struct Move { bool next; int count, from; bool loop, shuffle; int to; };

enum class Action { start, createPlaylist, deletePlaylist, writeDefaultTheme, saveSettings, writeTracks };

// What stands where (in Documents; "playlist": a playlist's file) or which write fails ("write n": the nth write or sync,
// "limit": a file-size limit), what is done then, how each printed line begins ('@': the file written); content: a
// "text"'s, or the theme written.
struct Fault { QString thing, where; Action action; QStringList printed; QByteArray content = {}; };

} // namespace

class StoreTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void filesAreWrittenExactlyAndReadBack()
    {
        const PlaylistData twoTracks{{{QUuid("3f2504e0-4f89-41d3-9a0c-0305e82c3301"), "file:///home/me/Music/My%20Song.mp3",
                                       "Tab\there\nnew line", "AC/DC"},
                                      {QUuid("a1b2c3d4-e5f6-4711-8899-aabbccddeeff"), "file:///tmp/b.flac", "Track", "Unknown artist"}}};
        const SettingsData unsorted{"neo-lime", {}, false, true, false, true, false, std::nullopt,
                                    {{QUuid("3F2504E0-4F89-41D3-9A0C-0305E82C3301"), "Road \"trip\" \\ mix"}, {QUuid(), "Ünïcödé ♫"}}};
        QCOMPARE(toJson(defaults), dataFile("settings-defaults.json"));
        QCOMPARE(toJson(unsorted), dataFile("settings-no-selection.json"));
        QCOMPARE(toJson(twoTracks), dataFile("playlist-two-tracks.json"));
        for (const QString& family : themeFamilyNames())
            QCOMPARE(toJson(familyLayout(*familyOfTheme(family + "-lime"))), dataFile("theme-" + family + ".json"));
        QCOMPARE(settingsDataFromJson(dataFile("settings-no-selection.json")).value, unsorted);
        QCOMPARE(playlistDataFromJson(dataFile("playlist-two-tracks.json")).value, twoTracks);
        // Shortest exact numbers, with an exponent only for the extremes.
        const std::pair<double, const char*> numbers[]{{1.0 / 3, "0.3333333333333333"}, {-0.0, "0"}, {-0.0001, "-0.0001"},
                                                       {1e20, "100000000000000000000"}, {1e21, "1e+21"}, {-1e-300, "-1e-300"}};
        for (const auto& [number, text] : numbers)
            QCOMPARE(jsonNumber(number), QByteArray(text));
        // Half a surrogate pair (from a JSON escape or a tag) could not be written: it becomes U+FFFD.
        const QString bad(QChar::ReplacementCharacter);
        const QByteArray halves = dataFile("playlist-two-tracks.json").replace("AC\\/DC", "\\udfb5\\ud83c\\udfb5\\ud83c");
        QCOMPARE(playlistDataFromJson(halves).value->tracks.first().artist, bad + "🎵" + bad);
        QCOMPARE(Track::make("file:///a", QString(QChar(0xd83c)), "B").trackName, bad);
    }

    void filesDecodeOnlyWhenWhole_data()
    {
        QTest::addColumn<Edit>("edit");
        // Every member is required but the settings' selection; a stored track keeps its id.
        for (const char* file : {"settings-defaults.json", "theme-mini.json", "playlist-two-tracks.json"}) {
            std::set<QByteArray> keys;
            for (const QByteArray& line : dataFile(file).split('\n'))
                keys.insert(line.left(line.indexOf("\" :") + 3).trimmed());
            std::erase_if(keys, [](const QByteArray& key) { return key.size() <= 3 || key.contains("lastSelectedPlaylistID"); });
            for (const QByteArray& key : keys)
                QTest::addRow("%s %s", file, key.constData()) << Edit{file, key, "\"renamed\" :"};
        }
        const char *settings = "settings-defaults.json", *theme = "theme-mini.json";
        QTest::newRow("null selection") << Edit{settings, "\"lastSelectedPlaylistID\" : 0", "\"lastSelectedPlaylistID\" : null", true};
        QTest::newRow("unknown keys") << Edit{settings, "\"playsSounds\"", "\"extra\" : {\"deep\" : [1]}, \"playsSounds\"", true};
        QTest::newRow("lower-case id") << Edit{"playlist-two-tracks.json", "A1B2C3D4-E5F6-4711-8899-AABBCCDDEEFF",
                                              "a1b2c3d4-e5f6-4711-8899-aabbccddeeff", true};
        QTest::newRow("theme list holds a number") << Edit{settings, "\"neo-lime\"", "42"};
        QTest::newRow("fractional index") << Edit{settings, "\"lastSelectedPlaylistID\" : 0", "\"lastSelectedPlaylistID\" : 0.5"};
        QTest::newRow("id with braces") << Edit{settings, "\"playlists\" : []",
                                               R"("playlists" : [{"id" : "{3F2504E0-4F89-41D3-9A0C-0305E82C3301}", "name" : "n"}])"};
        QTest::newRow("entry is a string") << Edit{settings, "\"playlists\" : []", "\"playlists\" : [\"x\"]"};
        QTest::newRow("not JSON") << Edit{settings, "{", "{,"};
        QTest::newRow("an array") << Edit{settings, "{", "[{"};
        QTest::newRow("fractional text size") << Edit{theme, "\"trackTextSize\" : 10", "\"trackTextSize\" : 10.5"};
        QTest::newRow("text size beyond int") << Edit{theme, "\"trackTextSize\" : 10", "\"trackTextSize\" : 99999999999"};
        QTest::newRow("flag as number") << Edit{theme, "\"textReversed\" : true", "\"textReversed\" : 1"};
        QTest::newRow("width as string") << Edit{theme, "\"playerWidth\" : 269", "\"playerWidth\" : \"269\""};
        QTest::newRow("window of no width") << Edit{theme, "\"playerWidth\" : 269", "\"playerWidth\" : 0"};
        QTest::newRow("window taller than screens") << Edit{theme, "\"playerMinHeight\" : 96", "\"playerMinHeight\" : 4000"};
        QTest::newRow("control of negative size") << Edit{theme, "\"ffHeight\" : 52", "\"ffHeight\" : -1"};
        QTest::newRow("huge text") << Edit{theme, "\"artistTextSize\" : 10", "\"artistTextSize\" : 201"};
        QTest::newRow("absent control") << Edit{theme, "\"minWidth\" : 17", "\"minWidth\" : 0", true};
        QTest::newRow("control off the picture") << Edit{theme, "\"minPosX\" : 9.5", "\"minPosX\" : -500", true};
    }
    void filesDecodeOnlyWhenWhole()
    {
        QFETCH(Edit, edit);
        QByteArray bytes = dataFile(edit.file);
        QVERIFY(bytes.contains(edit.from));
        bytes.replace(edit.from, edit.to);
        const QString error = edit.file.startsWith("settings") ? settingsDataFromJson(bytes).error
            : edit.file.startsWith("theme")                    ? themeDataFromJson(bytes).error
                                                               : playlistDataFromJson(bytes).error;
        QVERIFY2(error.isEmpty() == edit.decodes, qPrintable(error));
        if (!edit.decodes && edit.file.startsWith("theme")) // the key at fault is named
            QVERIFY2(error.contains(edit.from.mid(0, edit.from.indexOf('"', 1) + 1)), qPrintable(error));
    }

    void startsFirstThenFromTheFiles()
    {
        {
            Config config;
            QCOMPARE(config.trackTextSize(), 9); // the store's own defaults, not the mini layout's 10
            SettingsData expected = defaults;
            expected.playlists = config.playlists();
            QCOMPARE(storedSettings(), expected);
            config.createPlaylist();
            config.createPlaylist();
            config.setCurrentTheme("neo-lime");
            config.setLoopTracks(false);
            config.setLastSelectedPlaylistID(2);
            config.saveSettings();
        }
        StdoutCapture out;
        Config config;
        QCOMPARE(out.text(), QString()); // a normal start creates nothing and says nothing
        QVERIFY(config.playlists().size() == 3 && !config.loopTracks() && config.currentPlaylistIndex() == 2);
        QCOMPARE(config.playerWidth(), 130.0); // the neo layout file was read

        // Only real changes notify, and points compare exactly, not with Qt's fuzzy equality.
        QSignalSpy spy(&config, &Config::changed);
        config.loadSettings();
        config.setClosePos(config.closePos() + QPointF(1e-12, 0));
        QCOMPARE(spy, QList<QVariantList>{{QVariant::fromValue(Config::Property::closePos)}});
        // Only the written catalogue is sorted: upper case first, canonically equal
        // names in their order, code points deciding (U+FFFD before U+1F3B5).
        QList<Playlist> memory;
        for (const char* name : {"b", "A", "a", "\u00e9t\u00e9", "Z", "e\u0301te\u0301", "a", "\U0001F3B5", "\uFFFD"})
            memory.append({QUuid::createUuid(), QString::fromUtf8(name)});
        config.setPlaylists(memory);
        config.saveSettings();
        QCOMPARE(config.playlists(), memory);
        QCOMPARE(storedSettings().playlists, (QList<Playlist>{memory[1], memory[4], memory[2], memory[6], memory[0], memory[3],
                                                              memory[5], memory[8], memory[7]}));
        // Loads that fail say so and change nothing.
        spy.clear();
        QFile::remove(settingsPath());
        config.loadSettings();
        QDir().mkpath(settingsPath()); // a folder where the file should be
        config.loadSettings();
        QVERIFY2(out.lines().size() == 2 && out.lines().first() == "Settings file not found.", qPrintable(out.text()));
        QCOMPARE(spy.count(), 0);

        // A start with an empty Playlists folder leaves it empty.
        TestEnvironment::wipeHome();
        QDir().mkpath(playlistsFolder());
        QVERIFY(Config().playlists().isEmpty() && QDir(playlistsFolder()).isEmpty());
        QCOMPARE(storedSettings(), defaults);
    }

    void playlistsAreCreatedAndDeletedById()
    {
        Config config;
        config.setLastSelectedPlaylistID(5);
        config.setCurrentPlaylistIndex(3);
        config.createPlaylist();
        QCOMPARE(std::pair(config.lastSelectedPlaylistID(), config.currentPlaylistIndex()), (std::pair<qint64, qint64>(0, 3))); // index kept
        const Playlist added = config.playlists().value(1);
        QCOMPARE(config.playlistFileURL(added.id), playlistsFolder() + '/' + uuidText(added.id) + ".json");
        QCOMPARE(readFile(config.playlistFileURL(added.id)), emptyPlaylist);
        // Same names, different ids: only the one asked for goes.
        config.createPlaylist();
        const QList<Playlist> three = config.playlists();
        config.setLastSelectedPlaylistID(2);
        config.deletePlaylist(three.at(1).id);
        QCOMPARE(config.playlists(), (QList<Playlist>{three.at(0), three.at(2)}));
        QCOMPARE(config.lastSelectedPlaylistID(), 0);
        // An unknown id: its stray file goes, and nothing is saved.
        const QUuid stray = QUuid::createUuid();
        QVERIFY(writeFile(config.playlistFileURL(stray), {}) && QFile::remove(settingsPath()));
        config.deletePlaylist(stray);
        QVERIFY(!QFile::exists(config.playlistFileURL(stray)) && !QFile::exists(settingsPath()));
        // An index read from a file may point past the catalogue.
        for (qint64 index : {2, -1}) {
            config.setCurrentPlaylistIndex(index);
            QVERIFY(config.bringCurrentPlaylistIntoRange());
            QCOMPARE(config.currentPlaylistIndex(), 0);
        }
        config.setPlaylists({});
        QVERIFY(!config.bringCurrentPlaylistIntoRange());
    }

    // One track is found without decoding the rest unless the file is not as we write it; whole lists are decoded
    // once per change of the file.
    void playlistsAreDecodedOncePerChange_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("title"); // "-": none
        QTest::addColumn<bool>("decodedWhole");
        const auto track = [](const char* title, const char* more = "") {
            return QByteArray("{\"id\": \"0F6DCE3C-1D5B-4B52-A2A8-0D1B1D1E2F30\", \"urlString\": \"file:///a.mp3\", \"trackName\": \"")
                + title + "\", \"artist\": \"x\"" + more + "}";
        };
        const QByteArray three = "{\n  \"tracks\" : [" + track("a") + ",\n" + track("b") + ", " + track("c") + "]\n}";
        QTest::newRow("ours, last") << three << 2 << "c" << false;
        QTest::newRow("past the end") << three << 3 << "-" << false;
        QTest::newRow("other keys first") << "\xEF\xBB\xBF{\"x\": {\"y\": [\"]}\\\"\", 1.5e3, null]}, \"tracks\":[" + track("a", ", \"z\": [{}]")
                + " , " + track("q\\\"uote") + "]}" << 1 << "q\"uote" << false;
        QTest::newRow("not a list") << QByteArray("{\"tracks\": 5}") << 0 << "-" << true;
        QTest::newRow("a field missing") << QByteArray("{\"tracks\": [{\"trackName\": \"a\"}]}") << 0 << "-" << true;
        QTest::newRow("broken after it") << three.chopped(3) << 0 << "a" << false;
        // The last of a key written twice is the list, also when written with escapes.
        for (const char* again : {"tracks", "\\u0074racks"})
            QTest::newRow(again) << "{\"tracks\": [" + track("a") + "], \"" + again + "\": [" + track("b") + "]}" << 0 << "b" << true;
    }

    void playlistsAreDecodedOncePerChange()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, index);
        QFETCH(QString, title);
        QFETCH(bool, decodedWhole);
        Config config;
        const QUuid id = config.playlists().first().id;
        QVERIFY(writeFile(config.playlistFileURL(id), text));
        const std::optional<Track> track = config.playlistTrack(id, index);
        QCOMPARE(track ? track->trackName : "-", title);
        QCOMPARE(config.playlistReads(), int(decodedWhole));
        if (QByteArray(QTest::currentDataTag()) != "ours, last")
            return;
        const QList<Track> written{Track::make("file:///b.mp3", "B", "Y")};
        for (int i = 0; i < 2; ++i)
            QCOMPARE(config.readPlaylistTracks(id)->value(index).trackName, title);
        QCOMPARE(config.playlistReads(), 1);
        config.writePlaylistTracks(id, written);
        QCOMPARE(config.readPlaylistTracks(id), written);
        QCOMPARE(config.playlistReads(), 1);
        QVERIFY(writeFile(config.playlistFileURL(id), text)); // by another program
        QCOMPARE(config.readPlaylistTracks(id)->value(index).trackName, title);
        QCOMPARE(config.playlistReads(), 2);
    }

    void movesFollowLoopAndShuffleRules_data()
    {
        QTest::addColumn<Move>("move");
        QTest::newRow("next beyond a shrunk list, no loop: stays") << Move{true, 3, 9, false, false, 9};
        QTest::newRow("next beyond a shrunk list, loop: first") << Move{true, 3, 9, true, false, 0};
        QTest::newRow("shuffle with one track, shrunk") << Move{true, 1, 4, false, true, 0};
        QTest::newRow("previous ignores shuffle") << Move{false, 3, 2, false, true, 1};
        QTest::newRow("previous far beyond a shrunk list") << Move{false, 3, 11, false, false, 1};
        QTest::newRow("next in an empty playlist") << Move{true, 0, 2, true, true, 2};
        QTest::newRow("next without a playlist file") << Move{true, -1, 2, true, false, 2};
        QTest::newRow("previous without a playlist file") << Move{false, -1, 2, false, false, 2};
    }
    void movesFollowLoopAndShuffleRules()
    {
        QFETCH(Move, move);
        Config config;
        const QUuid id = config.playlists().first().id;
        config.writePlaylistTracks(id, QList<Track>(qMax(move.count, 0), Track::make("file:///a.mp3", "A", "B")));
        if (move.count < 0)
            QFile::remove(config.playlistFileURL(id));
        config.setLoopTracks(move.loop);
        config.setShuffleTracks(move.shuffle);
        StdoutCapture out;
        for (int round = 0; round < (move.shuffle ? 20 : 1); ++round) {
            config.setCurrentTrackIndex(move.from);
            move.next ? config.nextTrack() : config.previousTrack();
            QCOMPARE(config.currentTrackIndex(), move.to);
        }
        QCOMPARE(out.lines().size(), move.count < 0 ? 1 : 0); // an unreadable file is reported
    }

    void shuffleIsFair()
    {
        Config config;
        config.writePlaylistTracks(config.playlists().first().id, QList<Track>(4, Track::make("file:///a.mp3", "A", "B")));
        config.setShuffleTracks(true);
        int seen[4] = {};
        for (int i = 0; i < 1200; ++i) {
            config.setCurrentTrackIndex(1);
            config.nextTrack();
            ++seen[qBound(0, int(config.currentTrackIndex()), 3)];
        }
        // Each other index is expected 400 times; a chi-square (2 degrees of freedom) above 20 has odds under 1 in 20,000.
        const auto square = [&](int i) { return (seen[i] - 400) * (seen[i] - 400) / 400.0; };
        QVERIFY2(seen[1] == 0 && square(0) + square(2) + square(3) < 20, qPrintable(QString::number(square(0))));
    }

    void themesAreInstalledOnceReadWholeAndShown()
    {
        Config config;
        // The test pictures hold neo-lime's close and player and one mini-blueberry picture.
        const QString neo = config.themesFolder() + "/neo-lime";
        QCOMPARE(QDir(neo).entryList(QDir::Files, QDir::Name), (QStringList{"close.png", "player.png", "theme.json"}));
        config.loadTheme(); // mini: only the two text sizes differ from the store's defaults
        QCOMPARE(config.trackTextSize(), 10);
        // A hand-edited file: only the changed properties notify, in field order.
        QSignalSpy spy(&config, &Config::changed);
        ThemeData edited = familyLayout(ThemeFamily::mini);
        edited.closePosY = 12;
        edited.trackArtWidth = 90;
        QVERIFY(writeFile(config.themeFileURL(), toJson(edited)));
        config.loadTheme();
        QCOMPARE(spy, (QList<QVariantList>{{QVariant::fromValue(Config::Property::closePos)},
                                           {QVariant::fromValue(Config::Property::trackArtWidth)}}));
        // A file lacking one key changes nothing and says so; a missing file is silent.
        config.setCurrentTheme("max-graphite");
        QVERIFY(writeFile(config.themeFileURL(), readFile(config.themeFileURL()).replace("\"trackArtHeight\"", "\"x\"")));
        StdoutCapture out;
        config.loadTheme();
        config.setCurrentTheme("no-such-theme");
        config.loadTheme();
        QVERIFY2(out.lines().size() == 1 && out.text().startsWith("Failed to read theme.json: "), qPrintable(out.text()));
        QCOMPARE(config.geometry(), edited);
        config.setCurrentTheme("neo-lime");
        const auto colour = [&] { return config.themePicture("close").pixel(0, 0); };
        QCOMPARE(config.themePicture("close").devicePixelRatio(), 2.0);
        QCOMPARE(colour(), qRgb(0, 200, 0));
        // A replaced picture shows once the change is seen, even with the old one's size and time (a copy that keeps times).
        const QString close = neo + "/close.png";
        QImage replacement(40, 30, QImage::Format_ARGB32);
        for (QRgb fill : {qRgb(10, 20, 30), qRgb(30, 20, 10)}) {
            const QDateTime time = QFileInfo(close).lastModified();
            const qint64 size = QFileInfo(close).size();
            QTest::qSleep(10); // file times are compared to the millisecond
            replacement.fill(fill);
            QFile copied(close);
            QVERIFY(replacement.save(close) && copied.open(QIODevice::ReadWrite) && copied.setFileTime(time, QFileDevice::FileModificationTime));
            QVERIFY(fill == qRgb(10, 20, 30) || (QFileInfo(close).size() == size && QFileInfo(close).lastModified() == time));
            QTRY_COMPARE(colour(), fill);
        }
        // Unreadable or missing: the built-in fallback, whatever the theme.
        QVERIFY(writeFile(close, "not a png"));
        QTRY_COMPARE(colour(), qRgb(200, 0, 0));
        config.setCurrentTheme("not-installed");
        QCOMPARE(colour(), qRgb(200, 0, 0));

        // With the Themes folder present nothing is installed again, not even a deleted theme.
        QDir(neo).removeRecursively();
        config.installThemes();
        QVERIFY(!QFile::exists(neo));
        // A theme whose folder cannot be made (a file of the first in its path) is told and skipped; a name whose family
        // and colour are not known exactly gets the present geometry as its layout.
        QDir(config.themesFolder()).removeRecursively();
        config.setPlayerWidth(321.25);
        config.setAvailableThemes({"mini-lime", "mini-lime/theme.json/x", "max-yuzu", "Neo-yuzu", "neo-cherry"});
        config.installThemes();
        QCOMPARE(out.lines().size(), 2);
        QCOMPARE(QDir(config.themesFolder()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name),
                 (QStringList{"Neo-yuzu", "max-yuzu", "mini-lime", "neo-cherry"}));
        QList<std::optional<ThemeData>> layouts;
        for (const char* theme : {"mini-lime", "max-yuzu", "Neo-yuzu", "neo-cherry"})
            layouts.append(themeDataFromJson(readFile(config.themesFolder() + '/' + theme + "/theme.json")).value);
        QCOMPARE(layouts, (QList<std::optional<ThemeData>>{familyLayout(ThemeFamily::mini), familyLayout(ThemeFamily::max),
                                                           config.geometry(), config.geometry()}));
    }

    // Something else where the store's files belong, or any write failing (disk full at the bytes or the sync, a size
    // limit): one clear line per failure, no crash, and no file lost, cut short or left beside it.
    void faultsAreReportedAndFilesKept_data()
    {
        QTest::addColumn<Fault>("fault");
        const QString saveFailed = "Failed to save JSON data: ", writeFailed = "Failed to write theme.json: ";
        const QString created = "New playlist written successfully.", settings = "plinkBox-1/plinkBox-settings.json";
        QTest::newRow("file for the application folder")
            << Fault{"file", "plinkBox-1", Action::createPlaylist, {"Could not write", saveFailed}};
        // A theme's name of two lines: the message stays one line.
        QTest::newRow("file for the Themes folder") << Fault{"file", "plinkBox/Themes", Action::writeDefaultTheme, {writeFailed}, "two\nlines"};
        // A first start that cannot make the Themes folder goes on.
        QTest::newRow("file for plinkBox") << Fault{"file", "plinkBox", Action::start, {"Could not create the folder", created}};
        QTest::newRow("folder for a playlist") << Fault{"folder", "playlist", Action::deletePlaylist, {created, "Failed to delete playlist file: "}};
        // Opening a named pipe would wait for the other end.
        QTest::newRow("pipe for the settings") << Fault{"pipe", settings, Action::start, {"Could not read", saveFailed, created, saveFailed}};
        // A settings file that cannot be used is replaced, but kept beside the copy kept before.
        QTest::newRow("not JSON") << Fault{"text", settings, Action::start, {"The data is not valid JSON", created}, "{ not json"};
        QTest::newRow("empty theme name") << Fault{"text", settings, Action::start, {created}, toJson(SettingsData{})};
        const QString cannot = "Could not write \"@\": ", full = "No space left on device";
        const std::tuple<const char*, QString, Action, QString> writes[]{
            {"settings", settings, Action::saveSettings, saveFailed + cannot},
            {"new playlist", "playlist", Action::createPlaylist, cannot},
            {"tracks", "playlist", Action::writeTracks, writeFailed + cannot},
            {"theme.json", "plinkBox/Themes/mini-blueberry/theme.json", Action::writeDefaultTheme, writeFailed + cannot}};
        for (const auto& [name, where, action, line] : writes) {
            QTest::addRow("%s: disk full", name) << Fault{"write 1", where, action, {line + full}};
            QTest::addRow("%s: disk full at the sync", name) << Fault{"write 2", where, action, {line + full}};
            // A file-size limit cuts the bytes short (EFBIG, for root too); a new
            // playlist is smaller than any limit that leaves room for the line.
            if (action != Action::createPlaylist)
                QTest::addRow("%s: size limit", name) << Fault{"limit", where, action, {line + "File too large"}};
        }
    }
    void faultsAreReportedAndFilesKept()
    {
        QFETCH(Fault, fault);
        Config config;
        const QUuid mine = config.playlists().first().id;
        config.writePlaylistTracks(mine, {Track::make("file:///a.mp3", "A", "B")});
        const QString path = fault.where == "playlist" ? config.playlistFileURL(mine) : TestEnvironment::documents() + '/' + fault.where;
        if (fault.action == Action::start) // a first start
            TestEnvironment::wipeHome();
        const int failingStep = fault.thing.startsWith("write") ? fault.thing.back().digitValue() : 0;
        const bool writeFails = failingStep > 0 || fault.thing == "limit";
        if (!writeFails)
            QVERIFY(QDir(path).removeRecursively() && (!QFile::exists(path) || QFile::remove(path)) && QDir().mkpath(QFileInfo(path).path()));
        if (fault.thing == "file" || fault.thing == "folder")
            QVERIFY(writeFile(fault.thing == "file" ? path : path + "/keep.txt", "mine"));
        else if (fault.thing == "text")
            QVERIFY(writeFile(path, fault.content) && writeFile(path + ".broken", "kept before"));
        else if (fault.thing == "pipe")
            QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        else // the old bytes differ from any new ones
            QVERIFY(writeFile(path, readFile(path) + ' '));
        const QByteArray old = writeFails ? readFile(path) : QByteArray();
        const QStringList folder = QDir(QFileInfo(path).path()).entryList(QDir::AllEntries | QDir::Hidden);
        rlimit saved{};
        getrlimit(RLIMIT_FSIZE, &saved);
        // Below every file written, above the line printed.
        const rlimit limited{fault.thing == "limit" ? 1024 : saved.rlim_cur, saved.rlim_max};
        std::signal(SIGXFSZ, SIG_IGN);
        StdoutCapture out;
        alarm(60); // a read or write that waits for ever ends the test as a failure
        failNthWrite(failingStep);
        setrlimit(RLIMIT_FSIZE, &limited);
        switch (fault.action) {
        case Action::start: Config(); break;
        case Action::createPlaylist: config.createPlaylist(); break;
        case Action::deletePlaylist: config.deletePlaylist(mine); break;
        case Action::writeDefaultTheme: config.writeDefaultTheme(fault.content.isEmpty() ? config.currentTheme() : fault.content); break;
        case Action::saveSettings:
            config.setPlaylists({{mine, QString(1024, 'x')}});
            config.saveSettings();
            break;
        case Action::writeTracks: config.writePlaylistTracks(mine, QList<Track>(20, Track::make("file:///music/a.mp3", "A song", "Somebody")));
        }
        setrlimit(RLIMIT_FSIZE, &saved);
        failNthWrite(0);
        alarm(0);
        const QString named = fault.action == Action::createPlaylist ? config.playlistFileURL(config.playlists().last().id) : path;
        const auto begins = [&](const QString& line, QString start) { return line.startsWith(start.replace('@', named)); };
        QVERIFY2(std::ranges::equal(out.lines(), fault.printed, begins), qPrintable(out.text()));
        if (fault.thing == "file" || fault.thing == "folder")
            QCOMPARE(readFile(fault.thing == "file" ? path : path + "/keep.txt"), "mine");
        if (fault.thing == "text")
            QVERIFY(readFile(path + ".broken") == "kept before" && readFile(path + ".broken-2") == fault.content
                    && storedSettings().currentTheme == "mini-blueberry");
        if (fault.action == Action::deletePlaylist)
            QVERIFY(config.playlists().size() == 1 && config.playlists().first().id != mine && storedSettings().playlists == config.playlists());
        if (writeFails)
            QVERIFY(readFile(path) == old && QDir(QFileInfo(path).path()).entryList(QDir::AllEntries | QDir::Hidden) == folder);
    }

    // Killed at any moment while saving, the program leaves the settings file whole, as before or after that save.
    void aKillWhileSavingLeavesAWholeFile()
    {
        Config config;
        const QByteArray looping = readFile(settingsPath());
        const QByteArray notLooping = QByteArray(looping).replace("\"loopTracks\" : true", "\"loopTracks\" : false");
        for (int kill = 0; kill < 100; ++kill) {
            const pid_t child = fork();
            if (child == 0) { // saves until it is killed
                for (bool loop = false;; loop = !loop) {
                    config.setLoopTracks(loop);
                    config.saveSettings();
                }
            }
            usleep(QRandomGenerator::global()->bounded(500, 10000));
            QVERIFY(child > 0 && ::kill(child, SIGKILL) == 0 && waitpid(child, nullptr, 0) == child);
            const QByteArray now = readFile(settingsPath());
            QVERIFY2(looping != notLooping && (now == looping || now == notLooping), now.constData());
        }
    }
};

PLINK_TEST_MAIN_WITH(QGuiApplication, StoreTest)
#include "test_store.moc"
