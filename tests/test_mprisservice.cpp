#include "app/mprisservice.h"
#include "playerfixture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

using TestFiles::storedSettings;

// playerctl talking to this very process over the private session bus, with
// the event loop turning while it waits; words split at spaces.
static QString playerctl(const char* command)
{
    QProcess process;
    process.start(QStringLiteral("playerctl"),
                  QStringList{QStringLiteral("-p"), QStringLiteral("plinkbox")} + QString::fromLatin1(command).split(u' '));
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 10000))
        return QStringLiteral("<playerctl hung>");
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

class MprisServiceTest : public QObject
{
    Q_OBJECT

    QStringList m_announced; // the properties of every PropertiesChanged heard

public slots:
    void onPropertiesChanged(const QDBusMessage& message)
    {
        m_announced += qdbus_cast<QVariantMap>(message.arguments().value(1)).keys();
    }

private slots:
    // The desktop's media controls act as the skin and the "Player" menu do,
    // and hear of every change, also of a playlist rewritten under them.
    void mediaControlsDriveThePlayerAndHearOfChanges()
    {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") || QStandardPaths::findExecutable("playerctl").isEmpty())
            QSKIP("needs the private session bus and playerctl of scripts/testenv");
        QTemporaryDir folder;
        PlayerFixture::Rig rig(PlayerFixture::makeTones(folder.path(), 3, 6));
        rig.config.setPlaysSounds(false);
        int raised = 0;
        QList<QUrl> opened;
        MprisService service(rig.config, rig.player, rig.transport, [&] { ++raised; },
                             [&](const QList<QUrl>& urls) { opened += urls; });
        QVERIFY(service.registerOnSessionBus());
        // A second connection listens as a desktop's media applet would.
        QDBusConnection listener = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("listener"));
        QVERIFY(listener.connect(QString(), QString::fromLatin1(MprisService::objectPath),
                                 QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
                                 this, SLOT(onPropertiesChanged(QDBusMessage))));

        QCOMPARE(playerctl("status"), QStringLiteral("Stopped"));
        QCOMPARE(playerctl("metadata artist"), QStringLiteral("Sine"));
        const QString trackId = playerctl("metadata mpris:trackid"); // an object path, maybe in quotes
        QVERIFY2(QRegularExpression(QStringLiteral("^.?/org/plinkbox/track/[0-9A-F]{32}.?$")).match(trackId).hasMatch(),
                 qPrintable(trackId));
        // Next while stopped only moves the index, as fast-forward does.
        playerctl("next");
        QCOMPARE(rig.config.currentTrackIndex(), 1);
        QVERIFY(!rig.player.isPlaying());
        QCOMPARE(playerctl("metadata title"), QStringLiteral("Tone 2"));
        playerctl("play");
        QTRY_COMPARE(playerctl("status"), QStringLiteral("Playing"));
        QCOMPARE(rig.player.currentUrl().fileName(), QStringLiteral("tone1.wav"));
        QTRY_VERIFY(playerctl("metadata mpris:length").toLongLong() > 5'000'000);

        QSignalSpy seeked(&service, &MprisService::seeked);
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
        QCOMPARE(rig.player.progress(), 0.0);

        // Loop and shuffle are saved as the menu commands save them; there is only the playlist loop.
        QCOMPARE(playerctl("loop"), QStringLiteral("Playlist"));
        playerctl("loop None");
        m_announced.clear(); // the first announcement held every property
        playerctl("shuffle On");
        QTRY_VERIFY(!storedSettings().loopTracks && storedSettings().shuffleTracks);
        QTRY_VERIFY(m_announced.contains(QStringLiteral("Shuffle")));
        playerctl("loop Track");
        playerctl("shuffle Off");
        QTRY_VERIFY(storedSettings().loopTracks && !storedSettings().shuffleTracks);

        // Another program cut the playlist short under the current track: the
        // controls show what the skin shows, no track.
        QTest::qWait(300);
        m_announced.clear();
        const QString file = rig.config.playlistFileURL(rig.three);
        QByteArray bytes = TestFiles::readFile(file);
        bytes.truncate(bytes.indexOf("}") + 1);
        QVERIFY(TestFiles::writeFile(file, bytes + "\n  ]\n}"));
        QCOMPARE(rig.config.readPlaylistTracks(rig.three)->size(), 1);
        QTRY_VERIFY(m_announced.contains(QStringLiteral("Metadata")));
        QVERIFY(playerctl("metadata mpris:trackid").contains(QStringLiteral("NoTrack")));

        // A file opened from the controls goes where a file on the command line goes.
        playerctl("open file:///music/a%20b.flac");
        QTRY_COMPARE(opened, QList<QUrl>{QUrl::fromLocalFile("/music/a b.flac")});
        QDBusInterface root(QString::fromLatin1(MprisService::serviceName), QString::fromLatin1(MprisService::objectPath),
                            QStringLiteral("org.mpris.MediaPlayer2"));
        const QStringList types = root.property("SupportedMimeTypes").toStringList();
        const QByteArray entry = TestFiles::readFile(PLINK_DESKTOP_ENTRY);
        const qsizetype at = entry.indexOf("MimeType=") + 9;
        QCOMPARE(types.join(';') + ';', QString::fromUtf8(entry.mid(at, entry.indexOf('\n', at) - at)));

        QDBusConnection::sessionBus().send(QDBusMessage::createMethodCall(
            QString::fromLatin1(MprisService::serviceName), QString::fromLatin1(MprisService::objectPath),
            QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Raise")));
        QTRY_COMPARE(raised, 1);
        QDBusConnection::disconnectFromBus(QStringLiteral("listener"));
    }
};

PLINK_TEST_MAIN_WITH(QApplication, MprisServiceTest)
#include "test_mprisservice.moc"
