#include "app/mprisservice.h"
#include "playback/audioplayer.h"
#include "player/transport.h"
#include "store/config.h"
#include "store/jsonreader.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDir>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QUrl>

using namespace TestFiles;

namespace {

// playerctl talking to this very process over the private session bus: the
// test keeps the event loop turning while it waits.
QString playerctl(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("playerctl"), QStringList{QStringLiteral("-p"), QStringLiteral("plinkbox")} + arguments);
    if (!process.waitForStarted(5000))
        return QStringLiteral("<playerctl did not start>");
    QElapsedTimer timer;
    timer.start();
    while (process.state() != QProcess::NotRunning && timer.elapsed() < 10000)
        QTest::qWait(20);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace

class MprisServiceTest : public QObject
{
    Q_OBJECT

public slots:
    void onPropertiesChanged(const QDBusMessage& message)
    {
        m_changes.append(qdbus_cast<QVariantMap>(message.arguments().value(1)));
    }

private slots:
    void initTestCase();
    void cleanupTestCase();
    void reportsStateAndMetadata();
    void transportCommandsActLikeTheSkin();
    void positionAndSeeking();
    void loopAndShuffleAreSavedLikeMenuCommands();
    void changesAreAnnounced();
    void raiseShowsTheWindow();

private:
    std::unique_ptr<Config> m_config;
    std::unique_ptr<AudioPlayer> m_audioPlayer;
    std::unique_ptr<Transport> m_transport;
    std::unique_ptr<MprisService> m_service;
    int m_raised = 0;
    QList<QVariantMap> m_changes;
};

void MprisServiceTest::initTestCase()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") || QStandardPaths::findExecutable(QStringLiteral("playerctl")).isEmpty())
        QSKIP("needs the private session bus and playerctl of scripts/testenv");
    m_config = std::make_unique<Config>();
    const QString music = TestEnvironment::home() + QStringLiteral("/Music");
    QDir().mkpath(music);
    QList<Track> tracks;
    for (int i = 0; i < 2; ++i) {
        const QString path = music + QStringLiteral("/tone%1.wav").arg(i);
        AudioFixtures::Tone tone;
        tone.seconds = 6.0;
        tone.frequency = 440 + 220 * i;
        QVERIFY(AudioFixtures::makeTone(path, tone));
        tracks.append(Track::make(QUrl::fromLocalFile(path).toString(), i == 0 ? QStringLiteral("First") : QStringLiteral("Second"),
                                  QStringLiteral("Band %1").arg(i)));
    }
    m_config->writePlaylistTracks(m_config->playlists().first().id, tracks);
    m_config->setPlaysSounds(false);
    m_audioPlayer = std::make_unique<AudioPlayer>();
    m_transport = std::make_unique<Transport>(*m_config, *m_audioPlayer);
    m_service = std::make_unique<MprisService>(*m_config, *m_audioPlayer, *m_transport, [this] { ++m_raised; });
    QVERIFY(m_service->registerOnSessionBus());
}

void MprisServiceTest::cleanupTestCase()
{
    m_service.reset();
    m_transport.reset();
    m_audioPlayer.reset();
}

void MprisServiceTest::reportsStateAndMetadata()
{
    QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Stopped"));
    QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}), QStringLiteral("First"));
    QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("artist")}), QStringLiteral("Band 0"));
    const QString trackId = playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:trackid")});
    // playerctl prints an object path in quotes.
    QVERIFY2(QRegularExpression(QStringLiteral("^.?/org/plinkbox/track/[0-9A-F]{32}.?$")).match(trackId).hasMatch(),
             qPrintable(trackId));
    QCOMPARE(playerctl({QStringLiteral("loop")}), QStringLiteral("Playlist"));
    QCOMPARE(playerctl({QStringLiteral("shuffle")}), QStringLiteral("Off"));
}

void MprisServiceTest::transportCommandsActLikeTheSkin()
{
    // Next while stopped only moves the index, as fast-forward does.
    playerctl({QStringLiteral("next")});
    QCOMPARE(m_config->currentTrackIndex(), 1);
    QVERIFY(!m_audioPlayer->isPlaying());
    QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}), QStringLiteral("Second"));

    playerctl({QStringLiteral("play")});
    QTRY_VERIFY(m_audioPlayer->isPlaying());
    QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Playing"));
    QCOMPARE(m_audioPlayer->currentUrl().fileName(), QStringLiteral("tone1.wav"));
    QTRY_VERIFY(playerctl({QStringLiteral("metadata"), QStringLiteral("mpris:length")}).toLongLong() > 5'000'000);

    // Previous while playing switches and keeps playing.
    playerctl({QStringLiteral("previous")});
    QCOMPARE(m_config->currentTrackIndex(), 0);
    QTRY_COMPARE(m_audioPlayer->currentUrl().fileName(), QStringLiteral("tone0.wav"));
    QTRY_VERIFY(m_audioPlayer->isPlaying());

    playerctl({QStringLiteral("pause")});
    QTRY_COMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Paused"));
    playerctl({QStringLiteral("play-pause")});
    QTRY_VERIFY(m_audioPlayer->isPlaying());
    playerctl({QStringLiteral("stop")});
    QTRY_COMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Stopped"));
    QCOMPARE(m_audioPlayer->progress(), 0.0);
}

void MprisServiceTest::positionAndSeeking()
{
    playerctl({QStringLiteral("play")});
    QTRY_VERIFY(m_audioPlayer->isPlaying());
    QTRY_VERIFY(m_audioPlayer->duration() > 0);
    QSignalSpy seeked(m_service.get(), &MprisService::seeked);
    playerctl({QStringLiteral("position"), QStringLiteral("3")});
    QTRY_VERIFY(!seeked.isEmpty());
    const double position = playerctl({QStringLiteral("position")}).toDouble();
    QVERIFY2(position >= 2.9 && position < 4.5, qPrintable(QString::number(position)));
    QVERIFY(m_audioPlayer->progress() >= 0.45);

    // Seeking backwards past the start lands on the start.
    playerctl({QStringLiteral("position"), QStringLiteral("10-")});
    QTRY_VERIFY(playerctl({QStringLiteral("position")}).toDouble() < 1.0);
    playerctl({QStringLiteral("stop")});
}

void MprisServiceTest::loopAndShuffleAreSavedLikeMenuCommands()
{
    playerctl({QStringLiteral("loop"), QStringLiteral("None")});
    QTRY_VERIFY(!m_config->loopTracks());
    QVERIFY(!storedSettings().loopTracks);
    playerctl({QStringLiteral("loop"), QStringLiteral("Track")});
    QTRY_VERIFY(m_config->loopTracks());
    QVERIFY(storedSettings().loopTracks);
    QCOMPARE(playerctl({QStringLiteral("loop")}), QStringLiteral("Playlist"));

    playerctl({QStringLiteral("shuffle"), QStringLiteral("On")});
    QTRY_VERIFY(m_config->shuffleTracks());
    QVERIFY(storedSettings().shuffleTracks);
    playerctl({QStringLiteral("shuffle"), QStringLiteral("Off")});
    QTRY_VERIFY(!m_config->shuffleTracks());
    QVERIFY(!storedSettings().shuffleTracks);
}

void MprisServiceTest::changesAreAnnounced()
{
    // A second connection listens as a desktop's media applet would.
    QDBusConnection listener = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("listener"));
    m_changes.clear();
    QVERIFY(listener.connect(QString(), QString::fromLatin1(MprisService::objectPath),
                             QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
                             this, SLOT(onPropertiesChanged(QDBusMessage))));
    const auto announced = [&](const QString& key) {
        return std::any_of(m_changes.cbegin(), m_changes.cend(), [&](const QVariantMap& map) { return map.contains(key); });
    };
    m_transport->toggleShuffleTracks();
    m_transport->skip(Transport::Direction::next);
    QTRY_VERIFY(announced(QStringLiteral("Shuffle")));
    QTRY_VERIFY(announced(QStringLiteral("Metadata")));
    m_transport->toggleShuffleTracks();
    QDBusConnection::disconnectFromBus(QStringLiteral("listener"));
}

void MprisServiceTest::raiseShowsTheWindow()
{
    QDBusMessage raise = QDBusMessage::createMethodCall(QString::fromLatin1(MprisService::serviceName),
                                                        QString::fromLatin1(MprisService::objectPath),
                                                        QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Raise"));
    QDBusConnection::sessionBus().asyncCall(raise);
    QTRY_COMPARE(m_raised, 1);
}

PLINK_TEST_MAIN_WITH(QApplication, MprisServiceTest)
#include "test_mprisservice.moc"
