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

#include <atomic>
#include <thread>

using PlayerFixture::printedBy;
using TestFiles::readFile;
using TestFiles::writeFile;

namespace {

QString music(const QString& name)
{
    return TestEnvironment::home() + QStringLiteral("/Music/") + name;
}

// Deleted, or else changed into bytes that are no audio.
bool breakFile(const QString& path, bool deleted)
{
    return QFile::remove(path) && (deleted || AudioFixtures::writeRandomBytes(path, 64 * 1024, 7));
}

// Highest resident memory of this process so far, in MiB.
double peakMemoryMiB()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
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
    void init()
    {
        TestEnvironment::wipeHome();
        QVERIFY(QDir().mkpath(music({})));
        QCursor::setPos(0, 0); // the virtual cursor stays where the last test left it
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
    void indexesPastTheListsAreSurvived_data();
    void indexesPastTheListsAreSurvived();

private:
    // The rig over fresh tones in ~/Music, "Three" current, and the skin around it.
    void makeRig(double seconds)
    {
        m_rig = std::make_unique<PlayerFixture::Rig>(PlayerFixture::makeTones(music({}), 3, seconds));
        m_rig->config.setPlaysSounds(false); // the sounds are not linked in: each would print
    }
    void makePlayer(double seconds)
    {
        makeRig(seconds);
        showView(m_rig->config, m_rig->player, m_rig->transport);
    }
    void showView(Config& config, AudioPlayer& player, Transport& transport)
    {
        m_config = &config;
        m_player = &player;
        m_view = std::make_unique<ContentView>(config, player, transport);
        m_view->move(100, 100);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }
    QPointF centreOf(Element element) const
    {
        return elementRect(m_config->geometry(), element, m_view->scale()).center();
    }
    void clickAt(QPointF point) { QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, point.toPoint()); }
    static void closePopups()
    {
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
    }

    std::unique_ptr<PlayerFixture::Rig> m_rig;
    Config* m_config = nullptr;
    AudioPlayer* m_player = nullptr;
    std::unique_ptr<ContentView> m_view;
};

void FaultMatrixPlayerTest::brokenTracksFailInOneLineAndNeverSpin_data()
{
    QTest::addColumn<bool>("deleted"); // else changed into random bytes
    QTest::addColumn<bool>("shuffle");
    QTest::newRow("deleted") << true << false;
    QTest::newRow("random bytes") << false << false;
    QTest::newRow("random bytes, shuffled") << false << true;
}

void FaultMatrixPlayerTest::brokenTracksFailInOneLineAndNeverSpin()
{
    QFETCH(bool, deleted);
    QFETCH(bool, shuffle);
    makePlayer(2);
    QVERIFY(breakFile(music(QStringLiteral("tone0.wav")), deleted));
    QVERIFY(breakFile(music(QStringLiteral("tone2.wav")), deleted));
    m_config->setLoopTracks(true);

    bool stopped = false;
    QStringList lines = printedBy([&] {
        clickAt(centreOf(Element::playPause));
        // A file the backend took may fail only once it plays.
        stopped = QTest::qWaitFor([&] { return !m_player->isPlaying(); }, 5000);
        QTest::qWait(500);
    });
    QVERIFY(stopped);
    QVERIFY2(lines.size() == 1, qPrintable(lines.join(QLatin1Char('\n'))));
    QVERIFY(!lines.first().trimmed().isEmpty());
    QCOMPARE(m_config->currentTrackIndex(), 0);

    // The player goes on: the next track plays.
    clickAt(centreOf(Element::fastForward));
    QCOMPARE(m_config->currentTrackIndex(), 1);
    m_config->setShuffleTracks(shuffle);
    bool started = false;
    lines = printedBy([&] {
        clickAt(centreOf(Element::playPause));
        started = m_player->isPlaying() && QTest::qWaitFor([&] { return m_player->progress() > 0; }, 5000);
        // Every other track is broken, and the list loops: an advance that
        // took a failure for an end would go round for ever.
        stopped = QTest::qWaitFor([&] { return !m_player->isPlaying(); }, 10000);
        QTest::qWait(2000);
    });
    QVERIFY(started);
    QVERIFY(stopped);
    QVERIFY2(lines.size() == 1, qPrintable(lines.join(QLatin1Char('\n'))));
    QVERIFY(m_config->currentTrackIndex() != 1);
    const QStringList later = printedBy([] { QTest::qWait(1000); });
    QVERIFY2(later.isEmpty(), qPrintable(later.join(QLatin1Char('\n'))));
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
    const double fileMiB = double(QFileInfo(path).size()) / (1 << 20);
    const double peakBefore = peakMemoryMiB();

    // Read on a thread of its own, which the end of the process can take
    // down if it never returns. A hang guard, not a speed target.
    struct Result {
        std::atomic<bool> done = false;
        TrackTags tags;
        bool artIsNull = false;
    };
    auto result = std::make_shared<Result>();
    std::thread([result, path] {
        result->tags = readTrackTags(path);
        result->artIsNull = readAlbumArt(path).isNull();
        result->done = true;
    }).detach();
    QVERIFY(QTest::qWaitFor([&] { return result->done.load(); }, 10000));
    const TrackTags& tags = result->tags;
    QVERIFY2(titles.contains(tags.title), qPrintable(tags.title.left(100)));
    QVERIFY2(tags.artist == (tags.title == QLatin1String("Song") ? "Band" : "Unknown artist"),
             qPrintable(tags.artist.left(100)));
    QVERIFY(result->artIsNull);
    // The file itself is read, a copy or two of it is fair; what the tag
    // merely claims is not.
    const double grown = peakMemoryMiB() - peakBefore;
    QVERIFY2(grown < 3 * fileMiB + 32, qPrintable(QStringLiteral("%1 MiB more").arg(grown)));
}

void FaultMatrixPlayerTest::absurdThemeNumbersKeepTheWindowSane_data()
{
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<bool>("loads"); // else refused
    QTest::addColumn<bool>("playStaysUsable");

    QTest::newRow("gigantic player") << QStringList{"playerWidth=1e308", "playerHeight=1e308"} << true << true;
    QTest::newRow("negative player") << QStringList{"playerWidth=-1e6", "playerHeight=-3"} << true << false;
    QTest::newRow("every position and size 1e308") << QStringList{"*=1e308"} << true << false;
    QTest::newRow("largest text sizes")
        << QStringList{"trackTextSize=2147483647", "artistTextSize=2147483647"} << true << true;
    QTest::newRow("scrub bar backwards and huge")
        << QStringList{"scrubberMinPosX=1e300", "scrubberMaxPosX=-1e300", "scrubberWidth=1e300"} << true << true;
    QTest::newRow("number too large for a double") << QStringList{"*=1e999"} << false << true;
    QTest::newRow("text size past an integer") << QStringList{"trackTextSize=1e12"} << false << true;
    QTest::newRow("bare NaN") << QStringList{"playWidth=NaN"} << false << true;
    QTest::newRow("text where a number belongs") << QStringList{"playWidth=\"NaN\""} << false << true;
}

void FaultMatrixPlayerTest::absurdThemeNumbersKeepTheWindowSane()
{
    QFETCH(QStringList, edits);
    QFETCH(bool, loads);
    QFETCH(bool, playStaysUsable);

    makeRig(20);
    m_config = &m_rig->config;
    const QString themeFile = m_config->themeFileURL();
    const QByteArray original = readFile(themeFile);
    const QByteArray changed = edited(original, edits);
    QVERIFY(changed != original);
    QVERIFY(writeFile(themeFile, changed));
    const ThemeData before = m_config->geometry();
    const QStringList lines = printedBy([&] { m_config->loadTheme(); });
    if (loads) {
        QVERIFY2(lines.isEmpty(), qPrintable(lines.join(QLatin1Char('\n'))));
        QVERIFY(!(m_config->geometry() == before));
    } else {
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith(QStringLiteral("Failed to read theme.json: ")), qPrintable(lines.first()));
        QVERIFY(m_config->geometry() == before);
    }

    PlayerFixture::writeColouredTheme(*m_config); // pictures to stretch into the absurd boxes
    showView(m_rig->config, m_rig->player, m_rig->transport);
    m_rig->transport.playPausePressed(); // the thumb and the text lines are drawn too
    QVERIFY(m_player->isPlaying());
    for (const bool superSized : {true, false}) {
        m_config->setSuperSized(superSized);
        const QSize size = m_view->size();
        QVERIFY2(size.width() >= 1 && size.width() <= 4000 && size.height() >= 1 && size.height() <= 4000,
                 qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height())));
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        m_view->render(&image);
    }

    // Hit-testing over the whole window: hover, press and release anywhere.
    const QSize size = m_view->size();
    for (int row = 0; row < 5; ++row) {
        for (int column = 0; column < 5; ++column) {
            const QPoint point(column * (size.width() - 1) / 4, row * (size.height() - 1) / 4);
            QTest::mouseMove(m_view.get(), point);
            clickAt(point);
            closePopups();
        }
    }
    if (playStaysUsable) {
        if (!m_player->isPlaying())
            m_rig->transport.playPausePressed();
        QVERIFY(m_player->isPlaying());
        clickAt(centreOf(Element::playPause));
        QVERIFY(!m_player->isPlaying());
    }
}

void FaultMatrixPlayerTest::indexesPastTheListsAreSurvived_data()
{
    QTest::addColumn<QStringList>("settingsEdits");
    QTest::addColumn<int>("trackIndex"); // set after start, then the playlist shrinks to one track
    QTest::newRow("playlist 99") << QStringList{"lastSelectedPlaylistID=99"} << 0;
    QTest::newRow("no playlists at all") << QStringList{"playlists=[]"} << 0;
    QTest::newRow("track past a shrunk playlist") << QStringList() << 2;
}

void FaultMatrixPlayerTest::indexesPastTheListsAreSurvived()
{
    QFETCH(QStringList, settingsEdits);
    QFETCH(int, trackIndex);
    makeRig(0.6);
    const QUuid three = m_rig->three;
    m_rig.reset();
    // The settings file, edited by hand before the player starts.
    const QByteArray settings = readFile(TestFiles::settingsPath());
    QVERIFY(writeFile(TestFiles::settingsPath(), edited(settings, settingsEdits)));
    QCOMPARE(readFile(TestFiles::settingsPath()) == settings, settingsEdits.isEmpty());
    Config config;
    config.setPlaysSounds(false);
    AudioPlayer player;
    Transport transport(config, player);
    CommandMenu commandMenu(config, player, transport);
    SettingsView settingsView(config);
    settingsView.show();
    showView(config, player, transport);
    const auto dropView = qScopeGuard([this] { closePopups(); m_view.reset(); }); // before what it shows
    m_view->setCommandMenu(commandMenu.menu());
    const bool noPlaylists = config.playlists().isEmpty();
    if (trackIndex > 0) {
        config.setCurrentPlaylistIndex(1);
        config.setCurrentTrackIndex(trackIndex);
        const auto tracks = config.readPlaylistTracks(three);
        QVERIFY(tracks);
        QVERIFY(writeFile(config.playlistFileURL(three), toJson(PlaylistData{tracks->mid(0, 1)})));
    }

    // Everything that reads an index: drawing, the buttons, the end of a
    // track, both skin menus, the command menu and its submenus.
    m_view->repaint();
    clickAt(centreOf(Element::playPause));
    clickAt(centreOf(Element::fastForward));
    clickAt(centreOf(Element::rewind));
    if (m_player->onTrackFinished)
        m_player->onTrackFinished();
    for (const Element menu : {Element::playlistMenu, Element::trackMenu}) {
        clickAt(centreOf(menu));
        closePopups();
    }
    QMenu* commands = commandMenu.menu();
    emit commands->aboutToShow();
    QCoreApplication::processEvents();
    for (QAction* action : commands->actions()) {
        if (action->menu()) {
            for (QAction* entry : action->menu()->actions())
                entry->trigger();
        }
    }
    QCoreApplication::processEvents();
    transport.playPauseCommand();
    m_view->repaint();

    const qint64 playlist = config.currentPlaylistIndex();
    if (noPlaylists) {
        QVERIFY(config.playlists().isEmpty() || playlist < config.playlists().size());
    } else {
        QVERIFY(playlist >= 0 && playlist < config.playlists().size());
        const auto tracks = config.currentPlaylistTracks();
        QVERIFY(tracks);
        QVERIFY(tracks->isEmpty() || (config.currentTrackIndex() >= 0 && config.currentTrackIndex() < tracks->size()));
    }
}

PLINK_TEST_MAIN_WITH(QApplication, FaultMatrixPlayerTest)
#include "test_faultmatrix_player.moc"
