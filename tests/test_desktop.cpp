#include "app/appdelegate.h"
#include "app/mprisservice.h"
#include "app/trackopener.h"
#include "playerfixture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusMessage>
#include <QDir>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

using TestFiles::storedSettings;

// playerctl talking to this very process over the private session bus; words split at spaces.
static QString playerctl(const char* command)
{
    return PlayerFixture::run("playerctl", QStringList{"-p", "plinkbox"} + QString::fromLatin1(command).split(u' ')).second.trimmed();
}

class DesktopTest : public QObject
{
    Q_OBJECT

    QStringList m_announced; // the properties of every PropertiesChanged heard

public slots:
    void onPropertiesChanged(const QDBusMessage& message)
    {
        m_announced += qdbus_cast<QVariantMap>(message.arguments().value(1)).keys();
    }

private slots:
    void init() { TestEnvironment::wipeHome(); }

    // Names on the command line become file URLs; a Wayland session goes through XWayland unless a platform was chosen.
    void argumentsAndThePlatformOfTheSession()
    {
        QCOMPARE(TrackOpener::fromArgument("Déjà vu #1 %.mp3"), QUrl::fromLocalFile(QDir::currentPath() + "/Déjà vu #1 %.mp3"));
        QCOMPARE(TrackOpener::fromArgument("https://example.org/a.mp3"), QUrl("https://example.org/a.mp3"));
        const auto platformWith = [](const char* waylandDisplay, const char* platform) {
            for (const auto& [name, value] : {std::pair{"WAYLAND_DISPLAY", waylandDisplay}, {"QT_QPA_PLATFORM", platform}})
                *value ? qputenv(name, value) : qunsetenv(name);
            AppDelegate::choosePlatform();
            return qgetenv("QT_QPA_PLATFORM");
        };
        QCOMPARE((QByteArrayList{platformWith("wayland-0", ""), platformWith("wayland-0", "wayland"), platformWith("", "")}),
                 (QByteArrayList{"xcb;wayland", "wayland", ""}));
    }

    // Files and folders join the current playlist in one write, and the first of them plays.
    void openedFilesJoinThePlaylistAndPlay()
    {
        const QString folder = TestEnvironment::documents();
        QList<QUrl> files;
        for (const char* name : {"one.mp3", "Grüße #2.wav", "three.wav"}) {
            files.append(QUrl::fromLocalFile(folder + QLatin1Char('/') + QString::fromUtf8(name)));
            QVERIFY(AudioFixtures::makeTone(files.last().toLocalFile(), AudioFixtures::Tone(3)));
        }
        PlayerFixture::Rig rig({files.first().toLocalFile()}); // the current playlist holds the first file
        TrackOpener opener(rig.config, rig.player, rig.transport);
        rig.transport.playCurrentTrack();
        QSignalSpy writes(&rig.config, &Config::playlistTracksWritten);
        QSignalSpy opened(&opener, &TrackOpener::opened);
        StdoutCapture output;
        opener.open({files.at(1), QUrl::fromLocalFile(folder + "/gone.mp3"), QUrl::fromLocalFile(folder),
                     QUrl("https://example.org/a.mp3"), files.at(2)});
        QVERIFY(opened.wait());
        QCOMPARE(opened.first().first().toInt(), 5);
        QCOMPARE(writes.count(), 1);
        // The folder gives its audio files in name order, and nothing of the store's folders.
        const QList<Track> tracks = *rig.config.readPlaylistTracks(rig.three);
        QStringList names;
        for (const Track& track : tracks)
            names.append(QUrl(track.urlString).fileName());
        QCOMPARE(names, (QStringList{"one.mp3", "Grüße #2.wav", "Grüße #2.wav", "one.mp3", "three.wav", "three.wav"}));
        QCOMPARE(tracks.at(2).trackName, QStringLiteral("Track")); // no tag: as the editor names it
        QVERIFY(rig.config.currentTrackIndex() == 1 && rig.player.currentUrl() == files.at(1) && rig.player.isPlaying());
        QStringList lines = output.lines();
        QVERIFY(lines.size() == 2 && lines.takeLast().startsWith("Cannot open https://example.org/a.mp3: "));
        QCOMPARE(lines, QStringList{"Cannot open " + folder + "/gone.mp3: File does not exist"});
    }
    // The desktop's media controls through a real client, hearing of every change, also of a playlist rewritten under them.
    void mediaControlsDriveThePlayerAndHearOfChanges()
    {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") || QStandardPaths::findExecutable("playerctl").isEmpty())
            QSKIP("needs the private session bus and playerctl of scripts/testenv");
        QTemporaryDir folder;
        PlayerFixture::Rig rig(PlayerFixture::makeTones(folder.path(), 3, 6));
        rig.config.setPlaysSounds(false);
        MprisService service(rig.config, rig.player, rig.transport, [] {}, {});
        QVERIFY(service.registerOnSessionBus());
        // A second connection listens as a desktop's media applet would.
        QDBusConnection listener = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("listener"));
        QVERIFY(listener.connect(QString(), QString::fromLatin1(MprisService::objectPath),
                                 QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"),
                                 this, SLOT(onPropertiesChanged(QDBusMessage))));

        QCOMPARE(playerctl("metadata artist"), QStringLiteral("Sine"));
        const QString trackId = playerctl("metadata mpris:trackid"); // an object path, maybe in quotes
        QVERIFY2(QRegularExpression(QStringLiteral("^.?/org/plinkbox/track/[0-9A-F]{32}.?$")).match(trackId).hasMatch(),
                 qPrintable(trackId));
        // Next while stopped only moves the index, as fast-forward does.
        playerctl("next");
        QVERIFY(rig.config.currentTrackIndex() == 1 && !rig.player.isPlaying());
        QCOMPARE(playerctl("metadata title"), QStringLiteral("Tone 2"));

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

        // Another program cut the playlist short under the current track: the controls show no track, as the skin does.
        QTest::qWait(300);
        m_announced.clear();
        const QString file = rig.config.playlistFileURL(rig.three);
        QByteArray bytes = TestFiles::readFile(file);
        bytes.truncate(bytes.indexOf("}") + 1);
        QVERIFY(TestFiles::writeFile(file, bytes + "\n  ]\n}"));
        QCOMPARE(rig.config.readPlaylistTracks(rig.three)->size(), 1);
        QTRY_VERIFY(m_announced.contains(QStringLiteral("Metadata")));
        QVERIFY(playerctl("metadata mpris:trackid").contains(QStringLiteral("NoTrack")));

        QDBusInterface root(QString::fromLatin1(MprisService::serviceName), QString::fromLatin1(MprisService::objectPath),
                            QStringLiteral("org.mpris.MediaPlayer2"));
        const QByteArray entry = TestFiles::readFile(PLINK_DESKTOP_ENTRY);
        const qsizetype at = entry.indexOf("MimeType=") + 9;
        QCOMPARE(root.property("SupportedMimeTypes").toStringList().join(';') + ';',
                 QString::fromUtf8(entry.mid(at, entry.indexOf('\n', at) - at)));
        QDBusConnection::disconnectFromBus(QStringLiteral("listener"));
    }
};

PLINK_TEST_MAIN_WITH(QApplication, DesktopTest)
#include "test_desktop.moc"
