#include "app/mprisservice.h"
#include "playback/audioplayer.h"
#include "player/transport.h"
#include "store/config.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>

using TestFiles::storedSettings;

namespace {

// playerctl talking to this very process over the private session bus, with
// the event loop turning while it waits; words split at spaces.
QString playerctl(const char* command)
{
    QProcess process;
    process.start(QStringLiteral("playerctl"),
                  QStringList{QStringLiteral("-p"), QStringLiteral("plinkbox")} + QString::fromLatin1(command).split(u' '));
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 10000))
        return QStringLiteral("<playerctl hung>");
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

private:
    std::unique_ptr<Config> m_config;
    std::unique_ptr<AudioPlayer> m_audioPlayer;
    std::unique_ptr<Transport> m_transport;
    std::unique_ptr<MprisService> m_service;
    int m_raised = 0;
    QList<QVariantMap> m_changes;

private slots:
    void initTestCase()
    {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") || QStandardPaths::findExecutable(QStringLiteral("playerctl")).isEmpty())
            QSKIP("needs the private session bus and playerctl of scripts/testenv");
        m_config = std::make_unique<Config>();
        QList<Track> tracks;
        for (const int i : {0, 1}) {
            const QString path = TestEnvironment::documents() + QStringLiteral("/tone%1.wav").arg(i);
            QVERIFY(AudioFixtures::makeTone(path, AudioFixtures::Tone(6.0)));
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


    void reportsStateAndMetadata()
    {
        QCOMPARE(playerctl("status"), QStringLiteral("Stopped"));
        QCOMPARE(playerctl("metadata title"), QStringLiteral("First"));
        QCOMPARE(playerctl("metadata artist"), QStringLiteral("Band 0"));
        const QString trackId = playerctl("metadata mpris:trackid"); // an object path, maybe in quotes
        QVERIFY2(QRegularExpression(QStringLiteral("^.?/org/plinkbox/track/[0-9A-F]{32}.?$")).match(trackId).hasMatch(),
                 qPrintable(trackId));
        QCOMPARE(playerctl("loop"), QStringLiteral("Playlist"));
        QCOMPARE(playerctl("shuffle"), QStringLiteral("Off"));
    }

    void transportCommandsActLikeTheSkin()
    {
        // Next while stopped only moves the index, as fast-forward does.
        playerctl("next");
        QCOMPARE(m_config->currentTrackIndex(), 1);
        QVERIFY(!m_audioPlayer->isPlaying());
        QCOMPARE(playerctl("metadata title"), QStringLiteral("Second"));

        playerctl("play");
        QTRY_COMPARE(playerctl("status"), QStringLiteral("Playing"));
        QCOMPARE(m_audioPlayer->currentUrl().fileName(), QStringLiteral("tone1.wav"));
        QTRY_VERIFY(playerctl("metadata mpris:length").toLongLong() > 5'000'000);

        QSignalSpy seeked(m_service.get(), &MprisService::seeked);
        playerctl("position 3");
        QTRY_VERIFY(!seeked.isEmpty());
        QTest::qWait(500);
        QCOMPARE(seeked.size(), 1); // one seek, one announcement
        const double position = playerctl("position").toDouble();
        QVERIFY2(position >= 2.9 && position < 4.5, qPrintable(QString::number(position)));
        playerctl("pause");
        QTRY_COMPARE(playerctl("status"), QStringLiteral("Paused"));
        playerctl("position 10-"); // back past the start lands on the start
        QTRY_VERIFY(playerctl("position").toDouble() < 0.5);
        playerctl("stop");
        QTRY_COMPARE(playerctl("status"), QStringLiteral("Stopped"));
        QCOMPARE(m_audioPlayer->progress(), 0.0);
    }

    void loopAndShuffleAreSavedLikeMenuCommands()
    {
        playerctl("loop None");
        playerctl("shuffle On");
        QTRY_VERIFY(!storedSettings().loopTracks && storedSettings().shuffleTracks);
        playerctl("loop Track"); // there is only the playlist loop
        playerctl("shuffle Off");
        QTRY_VERIFY(storedSettings().loopTracks && !storedSettings().shuffleTracks);
        QCOMPARE(playerctl("loop"), QStringLiteral("Playlist"));
    }

    void changesAreAnnounced()
    {
        // A second connection listens as a desktop's media applet would.
        QDBusConnection listener = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("listener"));
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

        // The editor rewrote the playlist: another track may now stand at the current place.
        QTest::qWait(300);
        m_changes.clear();
        const QUuid id = m_config->playlists().first().id;
        QList<Track> tracks = *m_config->readPlaylistTracks(id);
        std::reverse(tracks.begin(), tracks.end());
        m_config->writePlaylistTracks(id, tracks);
        QTRY_VERIFY(announced(QStringLiteral("Metadata")));
        QDBusConnection::disconnectFromBus(QStringLiteral("listener"));
    }

    void raiseShowsTheWindow()
    {
        QDBusConnection::sessionBus().send(QDBusMessage::createMethodCall(
            QString::fromLatin1(MprisService::serviceName), QString::fromLatin1(MprisService::objectPath),
            QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Raise")));
        QTRY_COMPARE(m_raised, 1);
    }
};

PLINK_TEST_MAIN_WITH(QApplication, MprisServiceTest)
#include "test_mprisservice.moc"
