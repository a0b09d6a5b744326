#include "store/config.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>

using namespace TestFiles;

class ConfigTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void firstStartWritesDefaultsAndLaterStartsLoadThem();
    void changesNotifyOnlyWhenRealAndFailedLoadsKeepMemory();
    void brokenSettingsAreReplacedButKept_data();
    void brokenSettingsAreReplacedButKept();
    void saveSortsCatalogueButKeepsMemoryOrder();
    void executableStopsWithoutDocuments();
};

void ConfigTest::firstStartWritesDefaultsAndLaterStartsLoadThem()
{
    {
        Config config;
        QCOMPARE(config.trackTextSize(), 9); // the store's own defaults, not the mini layout's 10
        QCOMPARE(config.playlists().size(), 1);
        const SettingsData expected{"mini-blueberry", {"nano-tangerine", "neo-lime", "mini-blueberry", "max-graphite"},
                                    true, false, true, false, true, 0, config.playlists()};
        QCOMPARE(storedSettings(), expected);
        for (const QString& theme : expected.availableThemes)
            QVERIFY(QFile::exists(config.themesFolder() + QLatin1Char('/') + theme + QStringLiteral("/theme.json")));
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

void ConfigTest::changesNotifyOnlyWhenRealAndFailedLoadsKeepMemory()
{
    Config config;
    QSignalSpy spy(&config, &Config::changed);
    config.setPlaysSounds(config.playsSounds());
    config.setClosePos(config.closePos());
    config.loadSettings(); // the file holds what memory holds
    QCOMPARE(spy.count(), 0);
    // Points compare exactly, not with Qt's fuzzy equality.
    config.setClosePos(config.closePos() + QPointF(1e-9, 0));
    QList<Playlist> renamed = config.playlists();
    renamed.first().name += QLatin1Char('!');
    config.setPlaylists(renamed);
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(0).value<Config::Property>(), Config::Property::closePos);
    QCOMPARE(spy.at(1).at(0).value<Config::Property>(), Config::Property::playlists);

    QFile::remove(settingsPath());
    StdoutCapture out;
    config.loadSettings();
    QDir().mkpath(settingsPath()); // a folder where the file should be
    config.loadSettings();
    QCOMPARE(out.lines().size(), 2);
    QCOMPARE(out.lines().first(), QStringLiteral("Settings file not found."));
    QCOMPARE(spy.count(), 2);
    QCOMPARE(config.playlists(), renamed);
}

void ConfigTest::brokenSettingsAreReplacedButKept_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("reported");
    QTest::newRow("not JSON") << QByteArray("{ this is not json") << true;
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
    // A second broken file does not overwrite the first kept copy.
    QVERIFY(writeFile(settingsPath(), "second"));
    Config again;
    QCOMPARE(readFile(settingsPath() + QStringLiteral(".broken")), content);
    QCOMPARE(readFile(settingsPath() + QStringLiteral(".broken-2")), QByteArray("second"));
}

void ConfigTest::saveSortsCatalogueButKeepsMemoryOrder()
{
    Config config;
    QList<Playlist> memory;
    for (const QString& name : {QStringLiteral("b"), QStringLiteral("A"), QStringLiteral("a"), QStringLiteral("e\u0301te\u0301"),
                                QStringLiteral("Z"), QStringLiteral("\u00e9t\u00e9"), QStringLiteral("a"),
                                QStringLiteral("\U0001F3B5"), QStringLiteral("\uFFFD")})
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

void ConfigTest::executableStopsWithoutDocuments()
{
    // The real program, offscreen, where a file stands in the Documents folder's place.
    const QString home = TestEnvironment::home() + QStringLiteral("/blocked");
    QVERIFY(writeFile(home + QStringLiteral("/Documents"), "not a folder"));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(PLINKBOX_EXECUTABLE), {});
    QVERIFY(process.waitForFinished(20000));
    QVERIFY(process.exitCode() != 0);
    const QString output = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY2(output.startsWith(QStringLiteral("Unable to locate document directory: ")), qPrintable(output));
    QCOMPARE(output.count(QLatin1Char('\n')), 1);
}

PLINK_TEST_MAIN_WITH(QGuiApplication, ConfigTest)
#include "test_config.moc"
