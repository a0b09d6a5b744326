#include "app/mprisservice.h"
#include "playerfixture.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

namespace {
const QString rootInterface = QStringLiteral("org.mpris.MediaPlayer2");
const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

QString signatureOf(const QVariant& value)
{
    if (value.metaType() == QMetaType::fromType<QDBusArgument>())
        return value.value<QDBusArgument>().currentSignature();
    return QString::fromLatin1(QDBusMetaType::typeToSignature(value.metaType()));
}
QString trackIdIn(const QVariant& metadata)
{
    return qdbus_cast<QVariantMap>(metadata).value("mpris:trackid").value<QDBusObjectPath>().path();
}
// playerctl, a real client, talking to this very process
QString playerctl(const QStringList& words)
{
    return PlayerFixture::run("playerctl", QStringList{"-p", "plinkbox"} + words).second.trimmed();
}
} // namespace

class MprisTest : public QObject
{
    Q_OBJECT

    // A second connection calls and listens as an applet would; the event loop turns while it waits, so this process answers.
    QDBusConnection m_client = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("client"));
    QVariantMap m_announced; // the latest value of each property PropertiesChanged carried
    QList<qlonglong> m_seeked;

    QDBusMessage call(const QString& interface, const char* method, const QVariantList& arguments = {})
    {
        QDBusMessage message = QDBusMessage::createMethodCall(MprisService::serviceName, MprisService::objectPath,
                                                              interface, QString::fromLatin1(method));
        message.setArguments(arguments);
        return m_client.call(message, QDBus::BlockWithGui);
    }
    QVariantMap all(const QString& interface)
    {
        return qdbus_cast<QVariantMap>(
            call(QStringLiteral("org.freedesktop.DBus.Properties"), "GetAll", {interface}).arguments().value(0));
    }
    QVariant get(const char* name) { return all(playerInterface).value(QString::fromLatin1(name)); }
    QVariantMap metadata() { return qdbus_cast<QVariantMap>(get("Metadata")); }
    void set(const char* name, const QVariant& value)
    {
        call(QStringLiteral("org.freedesktop.DBus.Properties"), "Set",
             {playerInterface, QString::fromLatin1(name), QVariant::fromValue(QDBusVariant(value))});
    }
    void setPosition(const QVariant& trackId, qlonglong position) { call(playerInterface, "SetPosition", {trackId, position}); }

public slots:
    void onPropertiesChanged(const QDBusMessage& message)
    {
        m_announced.insert(qdbus_cast<QVariantMap>(message.arguments().value(1)));
    }
    // In tenths of a second: a relative Seek counts from wherever playing has got to.
    void onSeeked(qlonglong position) { m_seeked.append(position / 100'000); }

private slots:
    // Every property read with its D-Bus type, every method called, both signals heard, where their answers differ.
    void everyMemberOfBothInterfaces()
    {
        if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS") || QStandardPaths::findExecutable("playerctl").isEmpty())
            QSKIP("needs the private session bus and playerctl of scripts/testenv");
        QTemporaryDir folder;
        PlayerFixture::Rig rig(PlayerFixture::makeTones(folder.path(), 3, 3, 1)); // 3, 4 and 5 s: lengths tell them apart
        rig.config.setPlaysSounds(false);
        rig.config.setCurrentPlaylistIndex(0); // "Untitled", empty
        int raised = 0;
        QList<QUrl> opened;
        MprisService service(rig.config, rig.player, rig.transport, [&] { ++raised; },
                             [&](const QList<QUrl>& urls) { opened += urls; });
        QVERIFY(service.registerOnSessionBus());
        QVERIFY(m_client.connect(QString(), MprisService::objectPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                 QStringLiteral("PropertiesChanged"), this, SLOT(onPropertiesChanged(QDBusMessage))));
        QVERIFY(m_client.connect(QString(), MprisService::objectPath, playerInterface, QStringLiteral("Seeked"), this,
                                 SLOT(onSeeked(qlonglong))));

        const QRegularExpression mimeLine(QStringLiteral("^MimeType=(.*);$"), QRegularExpression::MultilineOption);
        const QString mimeTypes = mimeLine.match(TestFiles::readFile(PLINK_DESKTOP_ENTRY)).captured(1);
        // name, D-Bus type, value (an invalid one: the type alone); with an empty playlist; MIME types as the desktop entry's
        const QList<std::tuple<QString, QString, QVariant>> table = {
            {"CanQuit", "b", true}, {"CanRaise", "b", true}, {"HasTrackList", "b", false},
            {"Identity", "s", "plinkBox"}, {"DesktopEntry", "s", "plinkbox"},
            {"SupportedUriSchemes", "as", QStringList{"file"}}, {"SupportedMimeTypes", "as", mimeTypes.split(';')},
            {"PlaybackStatus", "s", "Stopped"}, {"LoopStatus", "s", "Playlist"}, {"Shuffle", "b", false},
            {"Rate", "d", 1.0}, {"MinimumRate", "d", 1.0}, {"MaximumRate", "d", 1.0}, {"Volume", "d", 1.0},
            {"Metadata", "a{sv}", {}}, {"Position", "x", 0LL}, {"CanControl", "b", true}, {"CanGoNext", "b", false},
            {"CanGoPrevious", "b", false}, {"CanPlay", "b", false}, {"CanPause", "b", false}, {"CanSeek", "b", false}};
        QVariantMap values = all(rootInterface);
        values.insert(all(playerInterface));
        for (const auto& [name, type, value] : table) {
            const QVariant got = values.value(name);
            QVERIFY2(signatureOf(got) == type && (!value.isValid() || got == value), qPrintable(name));
        }
        const QString noTrack = QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack");
        QCOMPARE(trackIdIn(metadata()), noTrack);
        call(rootInterface, "Raise");
        QCOMPARE(raised, 1);
        call(playerInterface, "Play");
        call(playerInterface, "Next");
        QVERIFY(!rig.player.player());

        // Tracks arrive: Play and Next become possible, for playerctl too; Next while stopped only moves the index.
        rig.config.setCurrentPlaylistIndex(1);
        QTRY_VERIFY(m_announced.value("CanPlay").toBool() && m_announced.value("CanPause").toBool());
        QCOMPARE(playerctl({"metadata", "artist"}), QStringLiteral("Sine"));
        playerctl({"next"});
        QVERIFY(rig.config.currentTrackIndex() == 1 && !rig.player.isPlaying());
        // Loop and shuffle are saved as the menu saves them; a track loop is the playlist loop, the only one there is.
        // Without a loop Next stops at the list's end, Previous at its start.
        set("LoopStatus", "None");
        rig.config.setCurrentTrackIndex(2);
        QTRY_VERIFY(!m_announced.value("CanGoNext").toBool() && m_announced.value("CanGoPrevious").toBool());
        QVERIFY(!TestFiles::storedSettings().loopTracks);
        set("LoopStatus", "Track");
        QTRY_VERIFY(m_announced.value("CanGoNext").toBool() && m_announced.value("LoopStatus") == "Playlist");
        set("LoopStatus", "None");
        for (const auto& [index, method] : {std::pair{2, "Next"}, {0, "Previous"}}) {
            rig.config.setCurrentTrackIndex(index);
            call(playerInterface, "Play");
            QCOMPARE(get("PlaybackStatus").toString(), QStringLiteral("Playing"));
            call(playerInterface, method);
            QVERIFY(get("PlaybackStatus") == "Stopped" && rig.config.currentTrackIndex() == index);
        }

        // A skip while paused: the new track's length, at its start; a stale track id, or a place outside the track, is ignored.
        call(playerInterface, "PlayPause");
        call(playerInterface, "Seek", {1'500'000LL});
        call(playerInterface, "Pause");
        QTRY_COMPARE(m_seeked, QList<qlonglong>{15});
        const QVariant first = metadata().value("mpris:trackid");
        call(playerInterface, "Next");
        QVariantMap now = metadata();
        QCOMPARE(signatureOf(now.value("mpris:trackid")) + signatureOf(now.value("xesam:artist")), QStringLiteral("oas"));
        QVERIFY(QRegularExpression(QStringLiteral("^/org/plinkbox/track/[0-9A-F]{32}$")).match(trackIdIn(now)).hasMatch());
        QVERIFY(now.value("mpris:trackid") != first && get("PlaybackStatus") == "Paused");
        QVERIFY(now.value("mpris:length") == 4'000'000LL && get("Position") == 0LL && !get("CanSeek").toBool());
        call(playerInterface, "PlayPause");
        call(playerInterface, "Pause");
        QVERIFY(get("CanSeek").toBool() && metadata().value("mpris:length") == 4'000'000LL); // now of the open file
        for (const auto& [trackId, place] : {std::pair{first, 2'000'000LL}, {now.value("mpris:trackid"), -1LL},
                                             {now.value("mpris:trackid"), 4'100'000LL}})
            setPosition(trackId, place);
        QVERIFY(get("Position").toLongLong() < 1'000'000);
        setPosition(now.value("mpris:trackid"), 2'000'000);
        QVERIFY(qAbs(get("Position").toLongLong() - 2'000'000) < 50'000);
        call(playerInterface, "Seek", {-3'000'000LL});
        QTRY_COMPARE(m_seeked, (QList<qlonglong>{15, 20, 0}));
        call(playerInterface, "Seek", {10'000'000LL}); // past the end: Next
        QVERIFY(rig.config.currentTrackIndex() == 2 && get("PlaybackStatus") == "Paused");

        // Writable properties; a rate of zero pauses.
        set("Volume", 0.25);
        set("Shuffle", true); // from the last track, Next can draw another
        QTRY_VERIFY(m_announced.value("Volume") == 0.25 && m_announced.value("CanGoNext").toBool());
        call(playerInterface, "Play");
        set("Rate", 0.0);
        QVERIFY(get("PlaybackStatus") == "Paused" && TestFiles::storedSettings().shuffleTracks);
        call(playerInterface, "Stop");
        QVERIFY(get("PlaybackStatus") == "Stopped" && get("Position") == 0LL);
        call(playerInterface, "OpenUri", {"file:///music/a%20b.flac"});
        QCOMPARE(opened, QList<QUrl>{QUrl::fromLocalFile("/music/a b.flac")});

        // Another program cut the playlist short under the current track: no track, as the skin shows.
        const QString file = rig.config.playlistFileURL(rig.three);
        QByteArray bytes = TestFiles::readFile(file);
        bytes.truncate(bytes.indexOf("}") + 1);
        QVERIFY(TestFiles::writeFile(file, bytes + "\n  ]\n}"));
        QCOMPARE(rig.config.readPlaylistTracks(rig.three)->size(), 1);
        QTRY_COMPARE(trackIdIn(m_announced.value("Metadata")), noTrack);

        // Quit ends the application's event loop.
        QTimer::singleShot(5000, &service, [] { QCoreApplication::exit(1); }); // no Quit heard
        QTimer::singleShot(0, this, [this] {
            m_client.send(QDBusMessage::createMethodCall(MprisService::serviceName, MprisService::objectPath, rootInterface,
                                                         QStringLiteral("Quit")));
        });
        QCOMPARE(QCoreApplication::exec(), 0);
    }
};

PLINK_TEST_MAIN_WITH(QApplication, MprisTest)
#include "test_mpris.moc"
