#include "store/config.h"
#include "store/jsonreader.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>

using namespace TestFiles;

namespace {

// The real program on the offscreen platform, in its own home.
void startExecutable(QProcess& process, const QString& home)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PLINKBOX_EXECUTABLE), {});
}

} // namespace

class ConfigTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void propertiesAreNamedInOrderAndNotifyOnlyOnChange();
    void firstStartWritesDefaultsThemesAndOnePlaylist();
    void laterStartLoadsSettingsAndTheme();
    void brokenSettingsAreReplacedButKept_data();
    void brokenSettingsAreReplacedButKept();
    void failuresToLoadOrSaveAreReportedAndMemoryKept();
    void saveSortsCatalogueButKeepsMemoryOrder();
    void executableStartsTheStoreOrStopsWithoutDocuments();
};

void ConfigTest::propertiesAreNamedInOrderAndNotifyOnlyOnChange()
{
    const QStringList expected = QStringLiteral(
        "currentTheme availableThemes playsSounds superSized isFloating shuffleTracks loopTracks playlists "
        "currentPlaylistIndex currentTrackIndex lastSelectedPlaylistID playerWidth playerHeight playerMinWidth "
        "playerMinHeight trackTextSize artistTextSize textReversed closePos closeWidth closeHeight playPos "
        "playWidth playHeight ffPos ffWidth ffHeight minPos minWidth minHeight rrPos rrWidth rrHeight "
        "trackMenuPos trackMenuWidth trackMenuHeight playlistMenuPos playlistMenuWidth playlistMenuHeight "
        "scrubberMinPos scrubberMaxPos scrubberWidth scrubberHeight trackNamePos trackArtistPos trackTextWidth "
        "trackArtPos trackArtWidth trackArtHeight").split(QLatin1Char(' '));
    QStringList actual;
    for (int i = 0; i < Config::propertyCount; ++i)
        actual.append(QString::fromLatin1(Config::propertyName(Config::Property(i))));
    QCOMPARE(actual, expected);

    Config config;
    QSignalSpy spy(&config, &Config::changed);
    config.setPlaysSounds(config.playsSounds());
    config.setClosePos(config.closePos());
    config.setPlaylists(config.playlists());
    QCOMPARE(spy.count(), 0);
    // Points compare exactly, not with Qt's fuzzy equality.
    config.setClosePos(QPointF(config.closePos().x() + 1e-9, config.closePos().y()));
    QList<Playlist> renamed = config.playlists();
    renamed.first().name += QLatin1Char('!');
    config.setPlaylists(renamed);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(0).value<Config::Property>(), Config::Property::closePos);
    QCOMPARE(spy.at(1).at(0).value<Config::Property>(), Config::Property::playlists);
}

void ConfigTest::firstStartWritesDefaultsThemesAndOnePlaylist()
{
    StdoutCapture out;
    Config config;
    QCOMPARE(out.lines(), QStringList{QStringLiteral("New playlist written successfully.")});
    // The store keeps its built-in defaults, text sizes 9 included.
    QCOMPARE(config.trackTextSize(), 9);
    QCOMPARE(config.playlists().size(), 1);
    const Playlist first = config.playlists().first();
    QCOMPARE(first.name, QStringLiteral("Untitled"));
    QCOMPARE(readFile(config.playlistFileURL(first.id)), QByteArray("{\n  \"tracks\" : []\n}"));
    const SettingsData saved = storedSettings();
    QCOMPARE(saved.currentTheme, QStringLiteral("mini-blueberry"));
    QCOMPARE(saved.availableThemes, Config::defaultThemeCatalogue());
    QVERIFY(saved.playsSounds && !saved.superSized && saved.isFloating && !saved.shuffleTracks && saved.loopTracks);
    QCOMPARE(saved.lastSelectedPlaylistID, 0);
    QCOMPARE(saved.playlists, config.playlists());
    for (const QString& theme : Config::defaultThemeCatalogue())
        QVERIFY(QFile::exists(config.themesFolder() + QLatin1Char('/') + theme + QStringLiteral("/theme.json")));
}

void ConfigTest::laterStartLoadsSettingsAndTheme()
{
    {
        Config config;
        config.createPlaylist();
        config.createPlaylist();
        config.setCurrentTheme(QStringLiteral("neo-lime"));
        config.setLoopTracks(false);
        config.setLastSelectedPlaylistID(2);
        config.saveSettings();
    }
    StdoutCapture out;
    Config config;
    QCOMPARE(out.text(), QString()); // a normal start creates nothing and says nothing
    QCOMPARE(config.playlists().size(), 3);
    QVERIFY(!config.loopTracks());
    QCOMPARE(config.currentPlaylistIndex(), 2);
    QCOMPARE(config.playerWidth(), 130.0); // the neo layout file was read

    // Without a stored selection the index stays where it was.
    QVERIFY(writeFile(settingsPath(), readFile(settingsPath()).replace("\"lastSelectedPlaylistID\" : 2,", "")));
    QCOMPARE(Config().currentPlaylistIndex(), 0);
}

void ConfigTest::brokenSettingsAreReplacedButKept_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("reported");
    QTest::newRow("not JSON") << QByteArray("{ this is not json") << true;
    QTest::newRow("empty") << QByteArray() << true;
    QTest::newRow("missing key") << QByteArray(R"({"currentTheme":"neo-lime","playlists":[]})") << true;
    QTest::newRow("empty theme name")
        << QByteArray(R"({"currentTheme":"","availableThemes":[],"playsSounds":true,"superSized":false,)"
                      R"("isFloating":true,"shuffleTracks":false,"loopTracks":true,"playlists":[]})")
        << false;
}

void ConfigTest::brokenSettingsAreReplacedButKept()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, reported);
    QVERIFY(writeFile(settingsPath(), content));
    StdoutCapture out;
    Config config;
    // One line for a file that could not be decoded, then the first start's own.
    QCOMPARE(out.lines().size(), reported ? 2 : 1);
    QCOMPARE(storedSettings().currentTheme, QStringLiteral("mini-blueberry"));
    QCOMPARE(readFile(settingsPath() + QStringLiteral(".broken")), content);
    // A second broken file does not overwrite the first kept copy.
    QVERIFY(writeFile(settingsPath(), "second"));
    Config again;
    QCOMPARE(readFile(settingsPath() + QStringLiteral(".broken")), content);
    QCOMPARE(readFile(settingsPath() + QStringLiteral(".broken-2")), QByteArray("second"));
}

void ConfigTest::failuresToLoadOrSaveAreReportedAndMemoryKept()
{
    Config config;
    QFile::remove(settingsPath());
    QSignalSpy spy(&config, &Config::changed);
    {
        StdoutCapture out;
        config.loadSettings();
        QCOMPARE(out.lines(), QStringList{QStringLiteral("Settings file not found.")});
    }
    QDir().mkpath(settingsPath()); // a folder where the file should be
    config.setPlaysSounds(false);
    StdoutCapture out;
    config.loadSettings();
    config.saveSettings();
    QCOMPARE(out.lines().size(), 2);
    QVERIFY(out.lines().at(1).startsWith(QStringLiteral("Failed to save JSON data: ")));
    QCOMPARE(spy.count(), 1);
    QVERIFY(!config.playsSounds());
}

void ConfigTest::saveSortsCatalogueButKeepsMemoryOrder()
{
    Config config;
    const QString composed = QStringLiteral("\u00e9t\u00e9");
    const QString decomposed = QStringLiteral("e\u0301te\u0301");
    QList<Playlist> memory;
    for (const QString& name : {QStringLiteral("b"), QStringLiteral("A"), QStringLiteral("a"), decomposed,
                                QStringLiteral("Z"), composed, QStringLiteral("a"), QStringLiteral("\U0001F3B5"),
                                QStringLiteral("\uFFFD")})
        memory.append({QUuid::createUuid(), name});
    config.setPlaylists(memory);
    config.saveSettings();
    QCOMPARE(config.playlists(), memory);
    // Upper case first; canonically equal names keep their order; code points,
    // not UTF-16 units, decide (U+FFFD before U+1F3B5).
    QList<Playlist> expected;
    for (int i : {1, 4, 2, 6, 0, 3, 5, 8, 7})
        expected.append(memory.at(i));
    QCOMPARE(storedSettings().playlists, expected);
}

void ConfigTest::executableStartsTheStoreOrStopsWithoutDocuments()
{
    QProcess fresh;
    const QString home = TestEnvironment::home() + QStringLiteral("/fresh");
    startExecutable(fresh, home);
    const QString app = home + QStringLiteral("/Documents/plinkBox-1");
    QTRY_VERIFY_WITH_TIMEOUT(QDir(app + QStringLiteral("/Playlists")).entryList(QDir::Files).size() == 1, 20000);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(home + QStringLiteral("/Documents/plinkBox/Themes/max-graphite/theme.json")), 20000);
    QVERIFY(QFile::exists(app + QStringLiteral("/plinkBox-settings.json")));
    QCOMPARE(fresh.state(), QProcess::Running); // it stays up
    fresh.kill();
    fresh.waitForFinished();

    // A file where the Documents folder should be cannot be made a folder.
    const QString blocked = TestEnvironment::home() + QStringLiteral("/blocked");
    QVERIFY(writeFile(blocked + QStringLiteral("/Documents"), "not a folder"));
    QProcess process;
    startExecutable(process, blocked);
    QVERIFY(process.waitForFinished(20000));
    QVERIFY(process.exitCode() != 0);
    const QString output = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY2(output.startsWith(QStringLiteral("Unable to locate document directory: ")), qPrintable(output));
    QCOMPARE(output.count(QLatin1Char('\n')), 1);
}

PLINK_TEST_MAIN_WITH(QGuiApplication, ConfigTest)
#include "test_config.moc"
