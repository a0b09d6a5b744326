// Faults met while playing and editing: tracks that vanished or changed
// since they were added, tags with absurd sizes, theme.json files with absurd
// numbers, and indexes left pointing past the lists. The player must say so
// in a line where something failed, never crash, spin or grow without bound.
#include "app/commandmenu.h"
#include "playback/albumart.h"
#include "playback/audioplayer.h"
#include "playback/tagreader.h"
#include "player/contentview.h"
#include "player/transport.h"
#include "playerfixture.h"
#include "settings/settingsview.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QMenu>
#include <QScopeGuard>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using PlayerFixture::printedBy;
using TestFiles::readFile;
using TestFiles::writeFile;

namespace {

QString music(const QString& name)
{
    return TestEnvironment::home() + QStringLiteral("/Music/") + name;
}

// A JSON text with the values of the keys named in edits ("key=raw JSON";
// "*" names every position and size) replaced.
QByteArray edited(QByteArray json, const QStringList& edits)
{
    for (const QString& edit : edits) {
        const QString key = edit.section(QLatin1Char('='), 0, 0);
        const QString pattern = key == QLatin1String("*") ? QStringLiteral("\\w+(?:Pos[XY]|Width|Height)") : key;
        json = QString::fromUtf8(json)
                   .replace(QRegularExpression(QStringLiteral("(\"%1\" : )(?:\\[[^\\]]*\\]|[^,\\n]+)").arg(pattern)),
                            QStringLiteral("\\1") + edit.section(QLatin1Char('='), 1))
                   .toUtf8();
    }
    return json;
}

} // namespace

class FaultMatrixPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    // The rig over fresh tones in ~/Music, "Three" current, and the skin around it.
    void init()
    {
        TestEnvironment::wipeHome();
        QVERIFY(QDir().mkpath(music({})));
        QCursor::setPos(0, 0); // the virtual cursor stays where the last test left it
        m_rig = std::make_unique<PlayerFixture::Rig>(PlayerFixture::makeTones(music({}), 3, 2));
        m_rig->config.setPlaysSounds(false); // the sounds are not linked in: each would print
        m_view = std::make_unique<ContentView>(m_rig->config, m_rig->player, m_rig->transport);
        m_view->move(100, 100);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }
    void cleanup()
    {
        closePopups();
        m_view.reset();
        m_rig.reset();
    }

    void brokenTracksFailInOneLineAndNeverSpin_data();
    void brokenTracksFailInOneLineAndNeverSpin();
    void tagsReadWithinBounds_data();
    void tagsReadWithinBounds();
    void absurdThemeNumbersKeepTheWindowSane_data();
    void absurdThemeNumbersKeepTheWindowSane();
    void shortListsAreSurvivedEverywhere();

private:
    void click(Element element)
    {
        QTest::mouseClick(m_view.get(), Qt::LeftButton, {},
                          elementRect(m_rig->config.geometry(), element, m_view->scale()).center().toPoint());
    }
    static void closePopups()
    {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

    std::unique_ptr<PlayerFixture::Rig> m_rig;
    std::unique_ptr<ContentView> m_view;
};

void FaultMatrixPlayerTest::brokenTracksFailInOneLineAndNeverSpin_data()
{
    QTest::addColumn<bool>("deleted"); // else changed into random bytes, and shuffled
    QTest::addColumn<QString>("message"); // what the line begins with
    QTest::newRow("deleted") << true << QStringLiteral("File does not exist");
    QTest::newRow("random bytes, shuffled") << false << QString();
}

// Every other track is broken and the list loops: an advance that took a
// failure for an end would go round for ever.
void FaultMatrixPlayerTest::brokenTracksFailInOneLineAndNeverSpin()
{
    QFETCH(bool, deleted);
    QFETCH(QString, message);
    for (const QString& path : {music(QStringLiteral("tone0.wav")), music(QStringLiteral("tone2.wav"))})
        QVERIFY(QFile::remove(path) && (deleted || AudioFixtures::writeRandomBytes(path, 64 * 1024, 7)));
    Config& config = m_rig->config;
    config.setLoopTracks(true);
    config.setShuffleTracks(!deleted);
    config.setCurrentTrackIndex(1);
    const AudioPlayer& player = m_rig->player;
    bool started = false, stopped = false;
    const QStringList lines = printedBy([&] {
        click(Element::playPause);
        started = player.isPlaying() && QTest::qWaitFor([&] { return player.progress() > 0; }, 5000);
        // A file the backend took may fail only once it plays.
        stopped = QTest::qWaitFor([&] { return !player.isPlaying(); }, 10000);
        QTest::qWait(3000);
    });
    QVERIFY(started && stopped);
    QVERIFY2(lines.size() == 1 && lines.first().startsWith(message), qPrintable(lines.join(QLatin1Char('\n'))));
    QVERIFY(config.currentTrackIndex() != 1);
}

void FaultMatrixPlayerTest::tagsReadWithinBounds_data()
{
    using namespace AudioFixtures;
    QTest::addColumn<QByteArray>("tag"); // in front of a short MP3
    QTest::addColumn<QString>("path");   // else what is read instead of a file
    QTest::addColumn<QStringList>("titles"); // either is right

    const QList<Id3Frame> songAndBand{textFrame("TIT2", QStringLiteral("Song")),
                                      textFrame("TPE1", QStringLiteral("Band"))};
    const QStringList either{QStringLiteral("Track"), QStringLiteral("Song")};
    // Header: "ID3", version, revision, flags, size at 6; the first frame's size is at 14.
    QTest::newRow("a frame claiming 4 GiB") << id3Tag(songAndBand).replace(14, 4, QByteArray("\xff\xff\xff\xf0", 4))
                                            << QString() << either;
    QTest::newRow("a tag claiming 256 MiB") << id3Tag(songAndBand).replace(6, 4, QByteArray(4, '\x7f')) << QString()
                                            << either;
    QTest::newRow("a 24 MiB picture before the title")
        << id3Tag(QList{pictureFrame(QByteArray(24 << 20, '\x89'))} + songAndBand) << QString()
        << QStringList{QStringLiteral("Song")};
    // A dropped name may be anything: neither wait for a writer that never
    // comes nor read for ever.
    QTest::newRow("a named pipe") << QByteArray() << music(QStringLiteral("pipe.mp3")) << QStringList{either.first()};
    QTest::newRow("an endless device") << QByteArray() << QStringLiteral("/dev/zero") << QStringList{either.first()};
}

void FaultMatrixPlayerTest::tagsReadWithinBounds()
{
    QFETCH(QByteArray, tag);
    QFETCH(QString, path);
    QFETCH(QStringList, titles);
    if (path.isEmpty()) {
        path = music(QStringLiteral("tagged.mp3"));
        QVERIFY(AudioFixtures::makeTone(path, AudioFixtures::Tone(0.5)));
        QVERIFY(AudioFixtures::writeId3Tag(path, tag));
    } else if (path.startsWith(TestEnvironment::home())) {
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    }
    const auto peakMiB = [] {
        rusage usage {};
        getrusage(RUSAGE_SELF, &usage);
        return double(usage.ru_maxrss) / 1024.0;
    };
    const double peakBefore = peakMiB();
    alarm(30); // a read that never returns ends the test as a failure
    const TrackTags tags = readTrackTags(path);
    QVERIFY(readAlbumArt(path).isNull());
    alarm(0);
    QVERIFY2(titles.contains(tags.title), qPrintable(tags.title.left(100)));
    QVERIFY2(tags.artist == (tags.title == QLatin1String("Song") ? "Band" : "Unknown artist"),
             qPrintable(tags.artist.left(100)));
    // The file itself is read, a copy or two of it is fair; what the tag
    // merely claims is not.
    const double grown = peakMiB() - peakBefore;
    QVERIFY2(grown < 3 * double(QFileInfo(path).size()) / (1 << 20) + 32,
             qPrintable(QStringLiteral("%1 MiB more").arg(grown)));
}

void FaultMatrixPlayerTest::absurdThemeNumbersKeepTheWindowSane_data()
{
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<bool>("loads"); // else refused

    QTest::newRow("every position and size negative") << QStringList{"*=-1e6"} << true;
    QTest::newRow("every position and size 1e308") << QStringList{"*=1e308"} << true;
    QTest::newRow("largest text sizes") << QStringList{"trackTextSize=2147483647", "artistTextSize=2147483647"}
                                        << true;
    QTest::newRow("scrub bar backwards and huge")
        << QStringList{"scrubberMinPosX=1e300", "scrubberMaxPosX=-1e300", "scrubberWidth=1e300"} << true;
    QTest::newRow("number too large for a double") << QStringList{"*=1e999"} << false;
    QTest::newRow("text size past an integer") << QStringList{"trackTextSize=1e12"} << false;
    QTest::newRow("bare NaN") << QStringList{"playWidth=NaN"} << false;
    QTest::newRow("text where a number belongs") << QStringList{"playWidth=\"NaN\""} << false;
}

void FaultMatrixPlayerTest::absurdThemeNumbersKeepTheWindowSane()
{
    QFETCH(QStringList, edits);
    QFETCH(bool, loads);
    Config& config = m_rig->config;
    const QByteArray original = readFile(config.themeFileURL());
    QVERIFY(writeFile(config.themeFileURL(), edited(original, edits)));
    QVERIFY(readFile(config.themeFileURL()) != original);
    const ThemeData before = config.geometry();
    const QStringList lines = printedBy([&] { config.loadTheme(); });
    QCOMPARE(config.geometry() == before, !loads);
    if (!loads) {
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith(QStringLiteral("Failed to read theme.json: ")), qPrintable(lines.first()));
        return; // the window keeps the theme it had
    }
    QVERIFY2(lines.isEmpty(), qPrintable(lines.join(QLatin1Char('\n'))));

    PlayerFixture::writeColouredTheme(config); // pictures to stretch into the absurd boxes
    m_rig->transport.playPausePressed(); // the thumb and the text lines are drawn too
    QVERIFY(m_rig->player.isPlaying());
    for (const bool superSized : {true, false}) {
        config.setSuperSized(superSized);
        const QSize size = m_view->size();
        QVERIFY2(size.width() >= 1 && size.width() <= 4000 && size.height() >= 1 && size.height() <= 4000,
                 qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height())));
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        m_view->render(&image);
        // Hit-testing over the whole window: hover, press and release anywhere.
        for (int i = 0; i < 25; ++i) {
            const QPoint point(i % 5 * (size.width() - 1) / 4, i / 5 * (size.height() - 1) / 4);
            QTest::mouseMove(m_view.get(), point);
            QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, point);
            closePopups();
        }
    }
}

// Lists shorter than their indexes: the current playlist cut short on disk,
// then a settings file edited by hand to hold no playlists and a selection
// past them. Everything that reads an index is tried on each.
void FaultMatrixPlayerTest::shortListsAreSurvivedEverywhere()
{
    Config& config = m_rig->config;
    CommandMenu commandMenu(config, m_rig->player, m_rig->transport);
    SettingsView settingsView(config);
    settingsView.show();
    const auto dropView = qScopeGuard([this] { closePopups(); m_view.reset(); }); // before what it shows
    m_view->setCommandMenu(commandMenu.menu());
    const auto tryEverything = [&] {
        m_view->repaint();
        for (const Element element :
             {Element::playPause, Element::fastForward, Element::rewind, Element::playlistMenu, Element::trackMenu}) {
            click(element);
            closePopups();
        }
        if (m_rig->player.onTrackFinished)
            m_rig->player.onTrackFinished();
        QCoreApplication::processEvents(); // the menu is rebuilt later, as it would be between two clicks
        emit commandMenu.menu()->aboutToShow();
        for (QAction* action : commandMenu.menu()->actions()) {
            for (QAction* entry : action->menu() ? action->menu()->actions() : QList<QAction*>())
                entry->trigger();
        }
        QCoreApplication::processEvents();
        m_rig->transport.playPauseCommand();
        m_view->repaint();
    };

    config.setCurrentTrackIndex(2);
    const auto three = config.readPlaylistTracks(m_rig->three);
    QVERIFY(three && writeFile(config.playlistFileURL(m_rig->three), toJson(PlaylistData{three->mid(0, 1)})));
    tryEverything();
    const auto tracks = config.currentPlaylistTracks();
    QVERIFY(config.currentPlaylistIndex() >= 0 && config.currentPlaylistIndex() < config.playlists().size());
    QVERIFY(tracks && (tracks->isEmpty() || (config.currentTrackIndex() >= 0 && config.currentTrackIndex() < tracks->size())));

    const QString settings = TestFiles::settingsPath();
    QVERIFY(writeFile(settings, edited(readFile(settings), {QStringLiteral("playlists=[]"),
                                                            QStringLiteral("lastSelectedPlaylistID=99"),
                                                            QStringLiteral("playsSounds=false")})));
    config.loadSettings();
    QVERIFY(config.playlists().isEmpty());
    tryEverything();
    QVERIFY(!m_rig->player.isPlaying());
    QVERIFY(config.playlists().isEmpty() || config.currentPlaylistIndex() < config.playlists().size());
}

PLINK_TEST_MAIN_WITH(QApplication, FaultMatrixPlayerTest)
#include "test_faultmatrix_player.moc"
