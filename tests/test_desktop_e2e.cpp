// The real program on the test desktop, driven through the desktop's media
// controls (playerctl over the private session bus) and launched twice.
#include "playerfixture.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

using AudioFixtures::MonitorRecorder;
using TestFiles::storedSettings;

namespace {

QString run(const QString& program, const QStringList& arguments)
{
    QProcess tool;
    tool.start(program, arguments);
    tool.waitForFinished(10000);
    return QString::fromLocal8Bit(tool.readAllStandardOutput()).trimmed();
}

// Words split at spaces.
QString playerctl(const char* command)
{
    return run(QStringLiteral("playerctl"), QStringList{QStringLiteral("-p"), QStringLiteral("plinkbox")} +
                                                QString::fromLatin1(command).split(u' '));
}

QProcessEnvironment realDesktop()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    return environment;
}

} // namespace

class DesktopEndToEndTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    QProcess m_program;

private slots:
    void cleanup()
    {
        if (m_program.state() != QProcess::NotRunning) {
            playerctl("stop");
            m_program.kill();
            m_program.waitForFinished();
        }
    }

    // Heard while playing, silent once paused; loop and shuffle are saved as
    // the menu commands save them. A second launch exits at once, saying so,
    // and raises the minimised first.
    void mediaControlsAndASecondLaunch()
    {
        if (MonitorRecorder::source().isEmpty() || qEnvironmentVariableIsEmpty("DISPLAY")
            || qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
            QSKIP("needs the test desktop (scripts/testenv)");
        const QStringList tones = PlayerFixture::makeTones(m_toneFolder.path(), 2, 30);
        QCOMPARE(tones.size(), 2);
        {
            Config config;
            PlayerFixture::addPlaylist(config, QStringLiteral("Tones"), tones);
            config.setLastSelectedPlaylistID(0); // "Tones" sorts first when read back
            config.saveSettings();
        }
        m_program.setProcessChannelMode(QProcess::ForwardedChannels);
        m_program.setProcessEnvironment(realDesktop());
        m_program.start(QStringLiteral(PLINK_EXECUTABLE), {});
        QVERIFY(m_program.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(playerctl("status") == QLatin1String("Stopped"), 15000);
        const QString window = run(QStringLiteral("xdotool"), {"search", "--onlyvisible", "--pid",
                                                              QString::number(m_program.processId())}).section(u'\n', 0, 0);
        QVERIFY(!window.isEmpty());
        MonitorRecorder recorder;
        QVERIFY(recorder.start());
        playerctl("play-pause");
        QTRY_COMPARE(playerctl("status"), QStringLiteral("Playing"));
        const double playFrom = recorder.seconds();
        QTest::qWait(2000);
        QVERIFY2(recorder.level(playFrom + 0.5, recorder.seconds()) > 0.02, "no sound while playing");

        playerctl("next");
        QTRY_COMPARE(playerctl("metadata title"), QStringLiteral("Tone 2"));
        playerctl("previous");
        QTRY_COMPARE(playerctl("metadata title"), QStringLiteral("Tone 1"));

        playerctl("play-pause");
        QTRY_COMPARE(playerctl("status"), QStringLiteral("Paused"));
        QTest::qWait(1000);
        const double pausedFrom = recorder.seconds();
        QTest::qWait(2000);
        QVERIFY2(recorder.level(pausedFrom, recorder.seconds()) < 0.005, "sound after pause");

        playerctl("loop None");
        playerctl("shuffle On");
        QTRY_VERIFY(!storedSettings().loopTracks && storedSettings().shuffleTracks);

        run(QStringLiteral("xdotool"), {"windowminimize", "--sync", window});
        QTRY_VERIFY(run(QStringLiteral("xprop"), {"-id", window, "WM_STATE"}).contains(QLatin1String("Iconic")));
        QProcess second;
        second.setProcessEnvironment(realDesktop());
        QElapsedTimer timer;
        timer.start();
        second.start(QStringLiteral(PLINK_EXECUTABLE), {});
        QVERIFY(second.waitForFinished(10000));
        QCOMPARE(second.exitCode(), 0);
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(QString::fromUtf8(second.readAllStandardOutput()).contains(QLatin1String("already running")));
        QTRY_VERIFY(run(QStringLiteral("xprop"), {"-id", window, "WM_STATE"}).contains(QLatin1String("Normal")));
        QCOMPARE(m_program.state(), QProcess::Running);
    }
};

PLINK_TEST_MAIN_WITH(QApplication, DesktopEndToEndTest)
#include "test_desktop_e2e.moc"
