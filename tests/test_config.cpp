#include "store/config.h"
#include "store/jsonreader.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>

namespace {

QString appFolder()
{
    return TestEnvironment::documents() + QStringLiteral("/plinkBox-1");
}

QString settingsPath()
{
    return appFolder() + QStringLiteral("/plinkBox-settings.json");
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

SettingsData storedSettings()
{
    const auto decoded = settingsDataFromJson(readFile(settingsPath()));
    return decoded.value.value_or(SettingsData{});
}

QStringList playlistFiles()
{
    return QDir(appFolder() + QStringLiteral("/Playlists")).entryList(QDir::Files);
}

QList<QString> names(const QList<Playlist>& playlists)
{
    QList<QString> result;
    for (const Playlist& playlist : playlists)
        result.append(playlist.name);
    return result;
}

} // namespace

class ConfigTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void propertyTableHasEveryNameOnceInOrder();
    void settersNotifyOnlyOnARealChange();
    void firstStartWritesDefaultsThemesAndOnePlaylist();
    void laterStartLoadsSettingsAndTheme();
    void brokenSettingsAreReplacedButKept_data();
    void brokenSettingsAreReplacedButKept();
    void loadSettingsReportsAMissingFileAndKeepsTheStore();
    void saveSortsCatalogueButKeepsMemoryOrder();
    void saveFailureIsReportedAndMemoryKept();
    void missingDocumentsFolderIsFatal();
    void executableLeavesItsFilesOnAFreshHome();
};

void ConfigTest::propertyTableHasEveryNameOnceInOrder()
{
    const QStringList expected = QStringLiteral(
        "currentTheme availableThemes playsSounds superSized isFloating shuffleTracks loopTracks playlists "
        "currentPlaylistIndex currentTrackIndex lastSelectedPlaylistID playerWidth playerHeight playerMinWidth "
        "playerMinHeight trackTextSize artistTextSize textReversed closePos closeWidth closeHeight playPos "
        "playWidth playHeight ffPos ffWidth ffHeight minPos minWidth minHeight rrPos rrWidth rrHeight "
        "trackMenuPos trackMenuWidth trackMenuHeight playlistMenuPos playlistMenuWidth playlistMenuHeight "
        "scrubberMinPos scrubberMaxPos scrubberWidth scrubberHeight trackNamePos trackArtistPos trackTextWidth "
        "trackArtPos trackArtWidth trackArtHeight").split(QLatin1Char(' '));
    QCOMPARE(Config::propertyCount, 49);
    QStringList actual;
    for (int i = 0; i < Config::propertyCount; ++i)
        actual.append(QString::fromLatin1(Config::propertyName(Config::Property(i))));
    QCOMPARE(actual, expected);
}

void ConfigTest::settersNotifyOnlyOnARealChange()
{
    Config config;
    QSignalSpy spy(&config, &Config::changed);
    config.setPlaysSounds(config.playsSounds());
    config.setClosePos(config.closePos());
    config.setPlaylists(config.playlists());
    config.setTrackTextSize(config.trackTextSize());
    QCOMPARE(spy.count(), 0);

    // Points compare exactly, not with Qt's fuzzy equality.
    config.setClosePos(QPointF(config.closePos().x() + 1e-9, config.closePos().y()));
    config.setPlaysSounds(!config.playsSounds());
    QList<Playlist> renamed = config.playlists();
    renamed.first().name += QLatin1Char('!');
    config.setPlaylists(renamed);
    QCOMPARE(spy.count(), 3);
    QCOMPARE(spy.at(0).at(0).value<Config::Property>(), Config::Property::closePos);
    QCOMPARE(spy.at(1).at(0).value<Config::Property>(), Config::Property::playsSounds);
    QCOMPARE(spy.at(2).at(0).value<Config::Property>(), Config::Property::playlists);
}

void ConfigTest::firstStartWritesDefaultsThemesAndOnePlaylist()
{
    StdoutCapture out;
    Config config;
    QCOMPARE(out.lines(), QStringList{QStringLiteral("New playlist written successfully.")});

    // The store keeps its built-in defaults, text sizes 9 included.
    QCOMPARE(config.currentTheme(), QStringLiteral("mini-blueberry"));
    QCOMPARE(config.trackTextSize(), 9);
    QCOMPARE(config.playerMinWidth(), 20.0);
    QCOMPARE(config.lastSelectedPlaylistID(), 0);

    QCOMPARE(config.playlists().size(), 1);
    const Playlist first = config.playlists().first();
    QCOMPARE(first.name, QStringLiteral("Untitled"));
    QCOMPARE(playlistFiles(), QStringList{uuidText(first.id) + QStringLiteral(".json")});
    QCOMPARE(readFile(config.playlistFileURL(first.id)), QByteArray("{\n  \"tracks\" : []\n}"));

    const SettingsData saved = storedSettings();
    QCOMPARE(saved.currentTheme, QStringLiteral("mini-blueberry"));
    QCOMPARE(saved.availableThemes, Config::defaultThemeCatalogue());
    QVERIFY(saved.playsSounds && !saved.superSized && saved.isFloating && !saved.shuffleTracks && saved.loopTracks);
    QCOMPARE(saved.lastSelectedPlaylistID, 0);
    QCOMPARE(saved.playlists, config.playlists());

    // Every catalogue theme got its folder and layout file.
    for (const QString& theme : Config::defaultThemeCatalogue())
        QVERIFY2(QFile::exists(config.themesFolder() + QLatin1Char('/') + theme + QStringLiteral("/theme.json")),
                 qPrintable(theme));
}

void ConfigTest::laterStartLoadsSettingsAndTheme()
{
    {
        Config config;
        config.createPlaylist();
        config.createPlaylist();
        config.setCurrentTheme(QStringLiteral("neo-lime"));
        config.setShuffleTracks(true);
        config.setLoopTracks(false);
        config.setLastSelectedPlaylistID(2);
        config.saveSettings();
    }
    StdoutCapture out;
    Config config;
    QCOMPARE(out.text(), QString()); // a normal start creates nothing and says nothing
    QCOMPARE(config.playlists().size(), 3);
    QCOMPARE(config.currentTheme(), QStringLiteral("neo-lime"));
    QVERIFY(config.shuffleTracks());
    QVERIFY(!config.loopTracks());
    QCOMPARE(config.lastSelectedPlaylistID(), 2);
    QCOMPARE(config.currentPlaylistIndex(), 2);
    QCOMPARE(config.currentTrackIndex(), 0);
    QCOMPARE(config.playerWidth(), 130.0); // the neo layout file was read
    QCOMPARE(config.minWidth(), 0.0);
    QCOMPARE(playlistFiles().size(), 3);

    // Without a stored selection the index stays where it was.
    QByteArray bytes = readFile(settingsPath());
    bytes.replace("\"lastSelectedPlaylistID\" : 2,", "");
    writeFile(settingsPath(), bytes);
    Config again;
    QCOMPARE(again.currentPlaylistIndex(), 0);
    QCOMPARE(again.lastSelectedPlaylistID(), 0);
}

void ConfigTest::brokenSettingsAreReplacedButKept_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("reported");
    QTest::newRow("not JSON") << QByteArray("{ this is not json") << true;
    QTest::newRow("empty") << QByteArray() << true;
    QTest::newRow("missing key") << QByteArray(R"({"currentTheme":"neo-lime","playlists":[]})") << true;
    QTest::newRow("wrong type")
        << QByteArray(R"({"currentTheme":"neo-lime","availableThemes":[],"playsSounds":"yes","superSized":false,)"
                      R"("isFloating":true,"shuffleTracks":false,"loopTracks":true,"playlists":[]})")
        << true;
    QTest::newRow("empty theme name")
        << QByteArray(R"({"currentTheme":"","availableThemes":[],"playsSounds":true,"superSized":false,)"
                      R"("isFloating":true,"shuffleTracks":false,"loopTracks":true,"playlists":)"
                      R"([{"id":"3F2504E0-4F89-41D3-9A0C-0305E82C3301","name":"Mine"}]})")
        << false;
}

void ConfigTest::brokenSettingsAreReplacedButKept()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, reported);
    writeFile(settingsPath(), content);
    StdoutCapture out;
    Config config;
    const QStringList lines = out.lines();
    // One line for the broken file (when it could not be decoded), then the first start's own line.
    QCOMPARE(lines.size(), reported ? 2 : 1);
    QCOMPARE(lines.last(), QStringLiteral("New playlist written successfully."));
    QCOMPARE(storedSettings().currentTheme, QStringLiteral("mini-blueberry"));
    QCOMPARE(config.playlists().size(), 1);
    QCOMPARE(readFile(settingsPath() + QStringLiteral(".broken")), content);

    // A second broken file does not overwrite the first kept copy.
    writeFile(settingsPath(), "second");
    Config again;
    QCOMPARE(readFile(settingsPath() + QStringLiteral(".broken")), content);
    QCOMPARE(readFile(settingsPath() + QStringLiteral(".broken-2")), QByteArray("second"));
}

void ConfigTest::loadSettingsReportsAMissingFileAndKeepsTheStore()
{
    Config config;
    QFile::remove(settingsPath());
    QSignalSpy spy(&config, &Config::changed);
    {
        StdoutCapture out;
        config.loadSettings();
        QCOMPARE(out.lines(), QStringList{QStringLiteral("Settings file not found.")});
    }
    writeFile(settingsPath(), "[]");
    {
        StdoutCapture out;
        config.loadSettings();
        QCOMPARE(out.lines().size(), 1);
    }
    QCOMPARE(spy.count(), 0);

    // A settings path that is a folder is unreadable at start: defaults, and the save fails loudly.
    TestEnvironment::wipeHome();
    QDir().mkpath(settingsPath());
    StdoutCapture out;
    Config broken;
    const QStringList lines = out.lines();
    QVERIFY(lines.size() >= 2);
    QVERIFY2(lines.at(1).startsWith(QStringLiteral("Failed to save JSON data: ")), qPrintable(lines.join('\n')));
    QCOMPARE(broken.playlists().size(), 1);
}

void ConfigTest::saveSortsCatalogueButKeepsMemoryOrder()
{
    Config config;
    const QString composed = QStringLiteral("\u00e9t\u00e9");
    const QString decomposed = QStringLiteral("e\u0301te\u0301");
    const QList<Playlist> memory = {
        {QUuid::createUuid(), QStringLiteral("b")},  {QUuid::createUuid(), QStringLiteral("A")},
        {QUuid::createUuid(), QStringLiteral("a")},  {QUuid::createUuid(), decomposed},
        {QUuid::createUuid(), QStringLiteral("Z")},  {QUuid::createUuid(), composed},
        {QUuid::createUuid(), QStringLiteral("a")},  {QUuid::createUuid(), QStringLiteral("\U0001F3B5")},
        {QUuid::createUuid(), QStringLiteral("\uFFFD")}};
    config.setPlaylists(memory);
    config.saveSettings();
    QCOMPARE(config.playlists(), memory);
    const QList<Playlist> written = storedSettings().playlists;
    // Upper case before lower case; canonically equal names keep their order;
    // code points, not UTF-16 units, decide (U+FFFD before U+1F3B5).
    QCOMPARE(names(written), (QList<QString>{QStringLiteral("A"), QStringLiteral("Z"), QStringLiteral("a"),
                                             QStringLiteral("a"), QStringLiteral("b"), decomposed, composed,
                                             QStringLiteral("\uFFFD"), QStringLiteral("\U0001F3B5")}));
    QCOMPARE(written.at(2).id, memory.at(2).id);
    QCOMPARE(written.at(3).id, memory.at(6).id);
}

void ConfigTest::saveFailureIsReportedAndMemoryKept()
{
    Config config;
    const QByteArray before = readFile(settingsPath());
    QFile::remove(settingsPath());
    QDir().mkpath(settingsPath()); // a folder where the file should be
    config.setPlaysSounds(false);
    StdoutCapture out;
    config.saveSettings();
    const QStringList lines = out.lines();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.first().startsWith(QStringLiteral("Failed to save JSON data: ")));
    QVERIFY(!config.playsSounds());
    QVERIFY(!before.isEmpty());
}

void ConfigTest::missingDocumentsFolderIsFatal()
{
    // A file where the Documents folder should be cannot be made a folder.
    const QString home = TestEnvironment::home() + QStringLiteral("/blocked");
    writeFile(home + QStringLiteral("/Documents"), "not a folder");
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PLINKBOX_EXECUTABLE), {});
    QVERIFY(process.waitForFinished(20000));
    QVERIFY(process.exitCode() != 0);
    const QString output = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY2(output.startsWith(QStringLiteral("Unable to locate document directory: ")), qPrintable(output));
    QCOMPARE(output.count(QLatin1Char('\n')), 1);
}

void ConfigTest::executableLeavesItsFilesOnAFreshHome()
{
    const QString home = TestEnvironment::home() + QStringLiteral("/fresh");
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PLINKBOX_EXECUTABLE), {});
    QVERIFY(process.waitForStarted());
    const QString documents = home + QStringLiteral("/Documents");
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(documents + QStringLiteral("/plinkBox-1/plinkBox-settings.json"))
                                 && QDir(documents + QStringLiteral("/plinkBox-1/Playlists")).entryList(QDir::Files).size() == 1,
                             20000);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(documents + QStringLiteral("/plinkBox/Themes/max-graphite/theme.json")), 20000);
    QCOMPARE(process.state(), QProcess::Running); // it stays up
    process.kill();
    process.waitForFinished();
}

PLINK_TEST_MAIN_WITH(QGuiApplication, ConfigTest)
#include "test_config.moc"
