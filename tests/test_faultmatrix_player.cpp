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

#include <QApplication>
#include <QBuffer>
#include <QElapsedTimer>
#include <QMenu>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <thread>

using PlayerFixture::printedBy;

namespace {

enum class Breakage { deleted, randomBytes, folder, empty };

QString music(const QString& name)
{
    return TestEnvironment::home() + QStringLiteral("/Music/") + name;
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool breakFile(const QString& path, Breakage breakage)
{
    if (!QFile::remove(path))
        return false;
    switch (breakage) {
    case Breakage::deleted: return true;
    case Breakage::randomBytes: return AudioFixtures::writeRandomBytes(path, 64 * 1024, 7);
    case Breakage::folder: return QDir().mkpath(path);
    case Breakage::empty: return writeFile(path, {});
    }
    return false;
}

// Highest resident memory of this process so far, in MiB.
double peakMemoryMiB()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}

QByteArray syncSafe(quint32 value)
{
    QByteArray bytes(4, '\0');
    for (int i = 3; i >= 0; --i, value >>= 7)
        bytes[i] = char(value & 0x7f);
    return bytes;
}

QByteArray bigEndian(quint32 value)
{
    QByteArray bytes(4, '\0');
    for (int i = 3; i >= 0; --i, value >>= 8)
        bytes[i] = char(value & 0xff);
    return bytes;
}

quint32 crc32(const QByteArray& bytes)
{
    quint32 crc = 0xffffffffu;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

// A real one-pixel PNG whose header claims width × height pixels.
QByteArray pictureClaiming(quint32 width, quint32 height)
{
    QImage pixel(1, 1, QImage::Format_ARGB32);
    pixel.fill(Qt::red);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    pixel.save(&buffer, "PNG");
    QByteArray png = buffer.data();
    // Signature (8), IHDR length (4), "IHDR" at 12, width at 16, height at 20, CRC at 29.
    png.replace(16, 4, bigEndian(width));
    png.replace(20, 4, bigEndian(height));
    png.replace(29, 4, bigEndian(crc32(png.mid(12, 17))));
    return png;
}

QList<AudioFixtures::Id3Frame> songAndBand()
{
    return {AudioFixtures::textFrame("TIT2", QStringLiteral("Song")),
            AudioFixtures::textFrame("TPE1", QStringLiteral("Band"))};
}

// The mini layout written by a first start, with some values replaced by raw
// JSON text ("*" replaces every position and size).
QByteArray editedTheme(QByteArray json, const QStringList& edits)
{
    for (const QString& edit : edits) {
        const QString key = edit.section(QLatin1Char('='), 0, 0);
        const QString value = edit.section(QLatin1Char('='), 1);
        const QString pattern = key == QLatin1String("*")
            ? QStringLiteral("(\"\\w+(?:Pos[XY]|Width|Height)\" : )[^,\\n]+")
            : QStringLiteral("(\"%1\" : )[^,\\n]+").arg(key);
        QString text = QString::fromUtf8(json);
        text.replace(QRegularExpression(pattern), QStringLiteral("\\1") + value);
        json = text.toUtf8();
    }
    return json;
}

QString settingsPath()
{
    return TestEnvironment::documents() + QStringLiteral("/plinkBox-1/plinkBox-settings.json");
}

} // namespace

class FaultMatrixPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void vanishedOrChangedTrackFailsInOneLineAndPlayGoesOn_data();
    void vanishedOrChangedTrackFailsInOneLineAndPlayGoesOn();
    void autoAdvanceOverBrokenTracksStops_data();
    void autoAdvanceOverBrokenTracksStops();
    void absurdTagsReadWithinBounds_data();
    void absurdTagsReadWithinBounds();
    void tagsOfWhatIsNoFileAreTheDefaults_data();
    void tagsOfWhatIsNoFileAreTheDefaults();
    void absurdThemeNumbersKeepTheWindowSane_data();
    void absurdThemeNumbersKeepTheWindowSane();
    void indexesPastTheListsAreSurvived_data();
    void indexesPastTheListsAreSurvived();

private:
    // Adds the playlist "Songs" of these files (copies of the tones).
    void addSongs(const QStringList& tones);
    // The player's objects around the store as it stands.
    void makeObjects(bool withMenus);
    // A library with "Songs" selected, and the player around it.
    void makePlayer(const QStringList& tones)
    {
        addSongs(tones);
        m_config->setCurrentPlaylistIndex(m_config->playlists().size() - 1);
        makeObjects(false);
    }
    QPointF centreOf(Element element) const
    {
        return elementRect(m_config->geometry(), element, m_view->scale()).center();
    }
    void clickAt(QPointF point) { QTest::mouseClick(m_view.get(), Qt::LeftButton, {}, point.toPoint()); }
    void closePopups();

    QTemporaryDir m_pristine;
    QString m_longTone, m_shortTone, m_untaggedMp3;
    std::unique_ptr<Config> m_config;
    std::unique_ptr<AudioPlayer> m_player;
    std::unique_ptr<Transport> m_transport;
    std::unique_ptr<ContentView> m_view;
    std::unique_ptr<CommandMenu> m_commandMenu;
    std::unique_ptr<SettingsView> m_settings;
    QUuid m_songs;
};

void FaultMatrixPlayerTest::initTestCase()
{
    m_longTone = m_pristine.filePath(QStringLiteral("long.wav"));
    m_shortTone = m_pristine.filePath(QStringLiteral("short.wav"));
    m_untaggedMp3 = m_pristine.filePath(QStringLiteral("untagged.mp3"));
    QVERIFY(AudioFixtures::makeTone(m_longTone, AudioFixtures::Tone(20)));
    QVERIFY(AudioFixtures::makeTone(m_shortTone, AudioFixtures::Tone(0.6)));
    QVERIFY(AudioFixtures::makeTone(m_untaggedMp3, AudioFixtures::Tone(0.5)));
}

void FaultMatrixPlayerTest::init()
{
    TestEnvironment::wipeHome();
    QCursor::setPos(0, 0); // the virtual cursor stays where the last test left it
}

void FaultMatrixPlayerTest::cleanup()
{
    closePopups();
    m_settings.reset();
    m_commandMenu.reset();
    m_view.reset();
    m_transport.reset();
    m_player.reset();
    m_config.reset();
}

void FaultMatrixPlayerTest::closePopups()
{
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
}

void FaultMatrixPlayerTest::addSongs(const QStringList& tones)
{
    if (!m_config)
        m_config = std::make_unique<Config>();
    m_config->setPlaysSounds(false); // the sounds are not linked in: each would print
    QStringList paths;
    QDir().mkpath(music({}));
    for (int i = 0; i < tones.size(); ++i) {
        paths.append(music(QStringLiteral("track%1.wav").arg(i)));
        QFile::remove(paths.last());
        QVERIFY(QFile::copy(tones.at(i), paths.last()));
    }
    m_songs = PlayerFixture::addPlaylist(*m_config, QStringLiteral("Songs"), paths);
    m_config->saveSettings();
}

void FaultMatrixPlayerTest::makeObjects(bool withMenus)
{
    m_player = std::make_unique<AudioPlayer>();
    m_transport = std::make_unique<Transport>(*m_config, *m_player);
    m_view = std::make_unique<ContentView>(*m_config, *m_player, *m_transport);
    if (withMenus) {
        m_commandMenu = std::make_unique<CommandMenu>(*m_config, *m_player, *m_transport);
        m_view->setCommandMenu(m_commandMenu->menu());
        m_settings = std::make_unique<SettingsView>(*m_config);
        m_settings->show();
    }
    m_view->move(100, 100);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

void FaultMatrixPlayerTest::vanishedOrChangedTrackFailsInOneLineAndPlayGoesOn_data()
{
    QTest::addColumn<Breakage>("breakage");
    QTest::newRow("deleted") << Breakage::deleted;
    QTest::newRow("random bytes") << Breakage::randomBytes;
    QTest::newRow("a folder") << Breakage::folder;
    QTest::newRow("empty") << Breakage::empty;
}

void FaultMatrixPlayerTest::vanishedOrChangedTrackFailsInOneLineAndPlayGoesOn()
{
    QFETCH(Breakage, breakage);
    makePlayer({m_longTone, m_longTone});
    QVERIFY(breakFile(music(QStringLiteral("track0.wav")), breakage));

    bool stopped = false;
    const QStringList lines = printedBy([&] {
        clickAt(centreOf(Element::playPause));
        // A file the backend took may fail only once it plays.
        stopped = QTest::qWaitFor([&] { return !m_player->isPlaying(); }, 5000);
        QTest::qWait(500);
    });
    QVERIFY(stopped);
    QVERIFY2(lines.size() == 1, qPrintable(lines.join(QLatin1Char('\n'))));
    QVERIFY(!lines.first().trimmed().isEmpty());
    QVERIFY(!m_player->isPlaying());
    QCOMPARE(m_config->currentTrackIndex(), 0);

    // The player goes on: the next track plays.
    clickAt(centreOf(Element::fastForward));
    QCOMPARE(m_config->currentTrackIndex(), 1);
    clickAt(centreOf(Element::playPause));
    QVERIFY(m_player->isPlaying());
    QTRY_VERIFY(m_player->progress() > 0);
    QVERIFY(m_player->isPlaying());
}

void FaultMatrixPlayerTest::autoAdvanceOverBrokenTracksStops_data()
{
    QTest::addColumn<Breakage>("breakage");
    QTest::addColumn<bool>("shuffle");
    QTest::newRow("deleted") << Breakage::deleted << false;
    QTest::newRow("random bytes") << Breakage::randomBytes << false;
    QTest::newRow("folders") << Breakage::folder << false;
    QTest::newRow("random bytes, shuffled") << Breakage::randomBytes << true;
}

void FaultMatrixPlayerTest::autoAdvanceOverBrokenTracksStops()
{
    QFETCH(Breakage, breakage);
    QFETCH(bool, shuffle);
    makePlayer({m_shortTone, m_shortTone, m_shortTone, m_shortTone});
    for (int i = 1; i < 4; ++i)
        QVERIFY(breakFile(music(QStringLiteral("track%1.wav").arg(i)), breakage));
    m_config->setLoopTracks(true);
    m_config->setShuffleTracks(shuffle);

    // Every track after the first is broken, and the list loops: an advance
    // that took a failure for an end would go round for ever.
    bool started = false;
    bool stopped = false;
    const QStringList lines = printedBy([&] {
        clickAt(centreOf(Element::playPause));
        started = m_player->isPlaying();
        stopped = QTest::qWaitFor([&] { return !m_player->isPlaying(); }, 10000);
        QTest::qWait(2000);
    });
    QVERIFY(started);
    QVERIFY(stopped);
    QVERIFY(!m_player->isPlaying());
    QVERIFY2(lines.size() == 1, qPrintable(lines.join(QLatin1Char('\n'))));
    QVERIFY(m_config->currentTrackIndex() != 0);
    const QStringList later = printedBy([] { QTest::qWait(1000); });
    QVERIFY2(later.isEmpty(), qPrintable(later.join(QLatin1Char('\n'))));
}

void FaultMatrixPlayerTest::absurdTagsReadWithinBounds_data()
{
    using namespace AudioFixtures;
    QTest::addColumn<QByteArray>("tag");
    QTest::addColumn<QString>("title"); // empty: the defaults or the real title

    // Header: "ID3", version, revision, flags, size at 6; the first frame's
    // size is at 14.
    QByteArray tag = id3Tag(songAndBand(), 3);
    QTest::newRow("a frame claiming 4 GiB") << tag.replace(14, 4, bigEndian(0xfffffff0u)) << QString();
    tag = id3Tag(songAndBand(), 4);
    QTest::newRow("a frame larger than its tag") << tag.replace(14, 4, syncSafe(0x0fffffffu)) << QString();
    tag = id3Tag(songAndBand(), 3);
    QTest::newRow("a tag claiming 256 MiB") << tag.replace(6, 4, syncSafe(0x0fffffffu)) << QString();
    tag = id3Tag(songAndBand(), 3);
    tag[5] = char(0x40); // an extended header follows, claiming 4 GiB
    tag.insert(10, QByteArray("\xff\xff\xff\xf0\0\0\0\0\0\0", 10));
    tag.replace(6, 4, syncSafe(quint32(tag.size() - 10)));
    QTest::newRow("an extended header claiming 4 GiB") << tag << QString();
    QList<Id3Frame> frames{pictureFrame(QByteArray(24 << 20, '\x89'))};
    frames += songAndBand();
    QTest::newRow("a 24 MiB picture before the title") << id3Tag(frames, 3) << QStringLiteral("Song");
    frames = {pictureFrame(pictureClaiming(60000, 60000))};
    frames += songAndBand();
    QTest::newRow("a picture claiming 60000 x 60000 pixels") << id3Tag(frames, 3) << QStringLiteral("Song");
}

void FaultMatrixPlayerTest::absurdTagsReadWithinBounds()
{
    QFETCH(QByteArray, tag);
    QFETCH(QString, title);
    const QString path = music(QStringLiteral("tagged.mp3"));
    QDir().mkpath(music({}));
    QVERIFY(QFile::copy(m_untaggedMp3, path));
    QVERIFY(AudioFixtures::writeId3Tag(path, tag));
    const double fileMiB = double(QFileInfo(path).size()) / (1 << 20);
    const double peakBefore = peakMemoryMiB();

    QElapsedTimer clock;
    clock.start();
    const TrackTags tags = readTrackTags(path);
    const QImage art = readAlbumArt(path);
    // A hang guard, not a speed target: a reader that believes a claimed
    // size loops or allocates for far longer than this.
    QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));

    if (title.isEmpty())
        QVERIFY2(tags.title == QLatin1String("Track") || tags.title == QLatin1String("Song"), qPrintable(tags.title));
    else
        QCOMPARE(tags.title, title);
    QVERIFY2(tags.artist == QLatin1String("Unknown artist") || tags.artist == QLatin1String("Band"),
             qPrintable(tags.artist.left(100)));
    QVERIFY(art.isNull());
    // The file itself is read, a copy or two of it is fair; what the tag
    // merely claims is not.
    const double grown = peakMemoryMiB() - peakBefore;
    QVERIFY2(grown < 3 * fileMiB + 32, qPrintable(QStringLiteral("%1 MiB more").arg(grown)));
}

void FaultMatrixPlayerTest::tagsOfWhatIsNoFileAreTheDefaults_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("a named pipe") << "pipe";
    QTest::newRow("an endless device") << "device";
    QTest::newRow("a folder") << "folder";
}

void FaultMatrixPlayerTest::tagsOfWhatIsNoFileAreTheDefaults()
{
    // A dropped name may be anything; reading it must neither wait for a
    // writer that never comes nor read for ever.
    QFETCH(QString, kind);
    QString path = music(QStringLiteral("song.mp3"));
    QVERIFY(QDir().mkpath(music({})));
    if (kind == QLatin1String("pipe"))
        QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else if (kind == QLatin1String("device"))
        path = QStringLiteral("/dev/zero");
    else
        QVERIFY(QDir().mkpath(path));

    // Read on a thread of its own, which the end of the process can take
    // down if it never returns.
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
    QCOMPARE(result->tags, TrackTags());
    QVERIFY(result->artIsNull);
}

void FaultMatrixPlayerTest::absurdThemeNumbersKeepTheWindowSane_data()
{
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<bool>("loads"); // else refused
    QTest::addColumn<bool>("playStaysUsable");

    QTest::newRow("gigantic player") << QStringList{"playerWidth=1e308", "playerHeight=1e308"} << true << true;
    QTest::newRow("negative player") << QStringList{"playerWidth=-1e6", "playerHeight=-3"} << true << false;
    QTest::newRow("every position and size 1e308") << QStringList{"*=1e308"} << true << false;
    QTest::newRow("every position and size -1e308") << QStringList{"*=-1e308"} << true << false;
    QTest::newRow("every position and size 1e999") << QStringList{"*=1e999"} << false << true;
    QTest::newRow("largest text sizes")
        << QStringList{"trackTextSize=2147483647", "artistTextSize=2147483647"} << true << true;
    QTest::newRow("text size past an integer") << QStringList{"trackTextSize=1e12"} << false << true;
    QTest::newRow("huge text box") << QStringList{"trackTextWidth=1e308"} << true << true;
    QTest::newRow("bare NaN") << QStringList{"playWidth=NaN"} << false << true;
    QTest::newRow("text where a number belongs") << QStringList{"playWidth=\"NaN\""} << false << true;
    QTest::newRow("scrub bar backwards and huge")
        << QStringList{"scrubberMinPosX=1e300", "scrubberMaxPosX=-1e300", "scrubberWidth=1e300"} << true << true;
}

void FaultMatrixPlayerTest::absurdThemeNumbersKeepTheWindowSane()
{
    QFETCH(QStringList, edits);
    QFETCH(bool, loads);
    QFETCH(bool, playStaysUsable);

    m_config = std::make_unique<Config>();
    const QString themeFile = m_config->themeFileURL();
    const QByteArray original = readFile(themeFile);
    QVERIFY(!original.isEmpty());
    const QByteArray edited = editedTheme(original, edits);
    QVERIFY(edited != original);
    QVERIFY(writeFile(themeFile, edited));
    const ThemeData before = m_config->geometry();
    const QStringList lines = printedBy([&] { m_config->loadTheme(); });
    const bool loaded = lines.isEmpty();
    if (loaded) {
        QVERIFY(!(m_config->geometry() == before));
    } else {
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith(QStringLiteral("Failed to read theme.json: ")), qPrintable(lines.first()));
        QVERIFY(m_config->geometry() == before);
    }
    QCOMPARE(loaded, loads);

    PlayerFixture::writeColouredTheme(*m_config); // pictures to stretch into the absurd boxes
    makePlayer({m_longTone});
    m_transport->playPausePressed(); // the thumb and the text lines are drawn too
    QVERIFY(m_player->isPlaying());
    for (const bool superSized : {false, true}) {
        m_config->setSuperSized(superSized);
        const QSize size = m_view->size();
        QVERIFY2(size.width() >= 1 && size.width() <= 4000 && size.height() >= 1 && size.height() <= 4000,
                 qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height())));
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        m_view->render(&image);
    }
    m_config->setSuperSized(false);

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
            m_transport->playPausePressed();
        QVERIFY(m_player->isPlaying());
        clickAt(centreOf(Element::playPause));
        QVERIFY(!m_player->isPlaying());
    }
}

void FaultMatrixPlayerTest::indexesPastTheListsAreSurvived_data()
{
    QTest::addColumn<QString>("settingsEdit"); // regular expression = replacement
    QTest::addColumn<int>("trackIndex");        // set after start, then the playlist shrinks to one track

    const QString selected = QStringLiteral("\"lastSelectedPlaylistID\" : \\d+=\"lastSelectedPlaylistID\" : %1");
    QTest::newRow("playlist 99") << selected.arg(99) << 0;
    QTest::newRow("playlist -1") << selected.arg(-1) << 0;
    QTest::newRow("playlist at the integer limit") << selected.arg(std::numeric_limits<qint64>::max()) << 0;
    QTest::newRow("no playlists at all") << QStringLiteral("\"playlists\" : \\[[^\\]]*\\]=\"playlists\" : []") << 0;
    QTest::newRow("track past a shrunk playlist") << QString() << 2;
}

void FaultMatrixPlayerTest::indexesPastTheListsAreSurvived()
{
    QFETCH(QString, settingsEdit);
    QFETCH(int, trackIndex);
    addSongs({m_shortTone, m_shortTone, m_shortTone});
    m_config.reset();
    if (!settingsEdit.isEmpty()) {
        // The settings file, edited by hand before the player starts.
        const QString settings = QString::fromUtf8(readFile(settingsPath()));
        const QString edited = QString(settings).replace(QRegularExpression(settingsEdit.section(QLatin1Char('='), 0, 0)),
                                                         settingsEdit.section(QLatin1Char('='), 1));
        QVERIFY(edited != settings);
        QVERIFY(writeFile(settingsPath(), edited.toUtf8()));
    }
    m_config = std::make_unique<Config>();
    m_config->setPlaysSounds(false);
    const bool noPlaylists = m_config->playlists().isEmpty();
    makeObjects(true);
    if (trackIndex > 0) {
        m_config->setCurrentPlaylistIndex(m_config->playlists().size() - 1);
        m_config->setCurrentTrackIndex(trackIndex);
        const auto tracks = m_config->readPlaylistTracks(m_songs);
        QVERIFY(tracks);
        QVERIFY(writeFile(m_config->playlistFileURL(m_songs), toJson(PlaylistData{tracks->mid(0, 1)})));
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
    QMenu* commands = m_commandMenu->menu();
    emit commands->aboutToShow();
    QCoreApplication::processEvents();
    for (QAction* action : commands->actions()) {
        if (action->menu()) {
            for (QAction* entry : action->menu()->actions())
                entry->trigger();
        }
    }
    QCoreApplication::processEvents();
    m_transport->playPauseCommand();
    m_view->repaint();

    const qint64 playlist = m_config->currentPlaylistIndex();
    if (noPlaylists) {
        QVERIFY(m_config->playlists().isEmpty() || playlist < m_config->playlists().size());
    } else {
        QVERIFY(playlist >= 0 && playlist < m_config->playlists().size());
        const auto tracks = m_config->currentPlaylistTracks();
        QVERIFY(tracks);
        QVERIFY(tracks->isEmpty() || (m_config->currentTrackIndex() >= 0 && m_config->currentTrackIndex() < tracks->size()));
    }
}

PLINK_TEST_MAIN_WITH(QApplication, FaultMatrixPlayerTest)
#include "test_faultmatrix_player.moc"
