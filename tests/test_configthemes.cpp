#include "store/config.h"
#include "support/stdoutcapture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"
#include "themes/defaultlayouts.h"
#include "themes/themedata.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QSignalSpy>

using namespace TestFiles;

namespace {

QString themeFolder(const Config& config, const QString& theme)
{
    return config.themesFolder() + QLatin1Char('/') + theme;
}

// The test pictures: solid colours, to tell which one was shown.
QRgb colourOf(const QImage& image)
{
    return image.isNull() ? 0 : image.pixel(0, 0);
}

} // namespace

class ConfigThemesTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { TestEnvironment::wipeHome(); }

    void loadingAppliesTheFileOrNothingAndNotifiesRealChanges();
    void installationCopiesOnceWritesLayoutsAndSkipsWhatFails();
    void picturesComeFromTheThemeFolderWithFallback();
};

void ConfigThemesTest::loadingAppliesTheFileOrNothingAndNotifiesRealChanges()
{
    Config config;
    config.loadTheme(); // mini: only the two text sizes differ from the store's defaults
    QCOMPARE(config.trackTextSize(), 10);
    QSignalSpy spy(&config, &Config::changed);
    config.loadTheme();
    QCOMPARE(spy.count(), 0);
    // A hand-edited file: only the changed properties notify, in field order.
    ThemeData edited = familyLayout(ThemeFamily::mini);
    edited.closePosY = 12;
    edited.trackArtWidth = 90;
    QVERIFY(writeFile(config.themeFileURL(), toJson(edited)));
    config.loadTheme();
    QCOMPARE(spy.count(), 2);
    QCOMPARE(spy.at(0).at(0).value<Config::Property>(), Config::Property::closePos);
    QCOMPARE(spy.at(1).at(0).value<Config::Property>(), Config::Property::trackArtWidth);

    // A file lacking one key changes nothing and says so; a missing file is silent.
    spy.clear();
    config.setCurrentTheme(QStringLiteral("max-graphite"));
    QVERIFY(writeFile(config.themeFileURL(), readFile(config.themeFileURL()).replace("\"trackArtHeight\"", "\"x\"")));
    StdoutCapture out;
    config.loadTheme();
    config.setCurrentTheme(QStringLiteral("no-such-theme"));
    config.loadTheme();
    QCOMPARE(out.lines().size(), 1);
    QVERIFY(out.lines().first().startsWith(QStringLiteral("Failed to read theme.json: ")));
    QCOMPARE(spy.count(), 2); // the theme name changes only
    QCOMPARE(config.geometry(), edited);
}

void ConfigThemesTest::installationCopiesOnceWritesLayoutsAndSkipsWhatFails()
{
    Config config;
    // The test resources hold neo-lime's close and player pictures and one mini-blueberry picture.
    const QString neo = themeFolder(config, QStringLiteral("neo-lime"));
    QCOMPARE(QDir(neo).entryList(QDir::Files, QDir::Name),
             (QStringList{QStringLiteral("close.png"), QStringLiteral("player.png"), QStringLiteral("theme.json")}));
    QCOMPARE(readFile(neo + QStringLiteral("/close.png")), readFile(QStringLiteral(":/themes/neo-lime-close@2x.png")));

    // With the Themes folder present nothing is installed again, not even a deleted theme.
    QDir(neo).removeRecursively();
    config.installThemes();
    QVERIFY(!QFile::exists(neo));

    // The second theme's folder cannot be made (a file of the first stands in its path):
    // reported, and only that theme is skipped. A name whose family and colour are not
    // known exactly gets the present geometry as its layout.
    QDir(config.themesFolder()).removeRecursively();
    config.setPlayerWidth(321.25);
    config.setAvailableThemes({"mini-lime", "mini-lime/theme.json/x", "max-yuzu", "Neo-yuzu", "neo-cherry"});
    StdoutCapture out;
    config.installThemes();
    QCOMPARE(out.lines().size(), 1);
    QCOMPARE(QDir(config.themesFolder()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name),
             (QStringList{"Neo-yuzu", "max-yuzu", "mini-lime", "neo-cherry"}));
    const auto layout = [&](const char* theme) {
        return themeDataFromJson(readFile(themeFolder(config, theme) + "/theme.json")).value.value_or(ThemeData{});
    };
    QCOMPARE(layout("mini-lime"), familyLayout(ThemeFamily::mini));
    QCOMPARE(layout("max-yuzu"), familyLayout(ThemeFamily::max));
    QCOMPARE(layout("Neo-yuzu"), config.geometry());
    QCOMPARE(layout("neo-cherry"), config.geometry());
}

void ConfigThemesTest::picturesComeFromTheThemeFolderWithFallback()
{
    Config config;
    config.setCurrentTheme(QStringLiteral("neo-lime"));
    const QImage installed = config.themePicture(QStringLiteral("close"));
    QCOMPARE(installed.size(), QSize(34, 28));
    QCOMPARE(installed.devicePixelRatio(), 2.0);
    QCOMPARE(colourOf(installed), qRgb(0, 200, 0));

    // A picture the user replaced is shown at the next lookup.
    QImage replacement(40, 30, QImage::Format_ARGB32);
    replacement.fill(qRgb(10, 20, 30));
    QVERIFY(replacement.save(themeFolder(config, QStringLiteral("neo-lime")) + QStringLiteral("/close.png")));
    QCOMPARE(colourOf(config.themePicture(QStringLiteral("close"))), qRgb(10, 20, 30));
    // Also when the new file keeps the old one's size and modification time, as a copy that preserves times does.
    const QString close = themeFolder(config, QStringLiteral("neo-lime")) + QStringLiteral("/close.png");
    const QDateTime oldTime = QFileInfo(close).lastModified();
    const qint64 oldSize = QFileInfo(close).size();
    QTest::qSleep(10); // file times are compared to the millisecond
    replacement.fill(qRgb(30, 20, 10));
    QVERIFY(replacement.save(close));
    QFile copied(close);
    QVERIFY(copied.open(QIODevice::ReadWrite) && copied.setFileTime(oldTime, QFileDevice::FileModificationTime));
    copied.close();
    QCOMPARE(QFileInfo(close).lastModified(), oldTime);
    QCOMPARE(QFileInfo(close).size(), oldSize);
    QCOMPARE(colourOf(config.themePicture(QStringLiteral("close"))), qRgb(30, 20, 10));

    // Missing or unreadable: the built-in fallback, whatever the theme.
    QVERIFY(writeFile(themeFolder(config, QStringLiteral("neo-lime")) + QStringLiteral("/close.png"), "not a png"));
    QCOMPARE(colourOf(config.themePicture(QStringLiteral("close"))), qRgb(200, 0, 0));
    config.setCurrentTheme(QStringLiteral("not-installed"));
    QCOMPARE(colourOf(config.themePicture(QStringLiteral("close"))), qRgb(200, 0, 0));
    QVERIFY(config.themePicture(QStringLiteral("no-such-picture")).isNull());
}

PLINK_TEST_MAIN_WITH(QGuiApplication, ConfigThemesTest)
#include "test_configthemes.moc"
