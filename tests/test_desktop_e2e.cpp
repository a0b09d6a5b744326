// The real program on the test desktop, driven through the desktop's media
// controls (playerctl over the private session bus) and launched twice.
#include "playerfixture.h"
#include "store/jsonreader.h"
#include "support/audiofixtures.h"
#include "support/testenvironment.h"
#include "support/testfiles.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

using AudioFixtures::MonitorRecorder;

using namespace TestFiles;

namespace {

QString run(const QString& program, const QStringList& arguments)
{
    QProcess tool;
    tool.start(program, arguments);
    tool.waitForFinished(10000);
    return QString::fromLocal8Bit(tool.readAllStandardOutput()).trimmed();
}

QString playerctl(const QStringList& arguments)
{
    return run(QStringLiteral("playerctl"), QStringList{QStringLiteral("-p"), QStringLiteral("plinkbox")} + arguments);
}

} // namespace

class DesktopEndToEndTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void mediaControlsDriveThePlayer();
    void aSecondLaunchRaisesTheFirst();

private:
    QProcessEnvironment environment() const;
    QTemporaryDir m_toneFolder;
    QProcess m_program;
    QString m_window;
};

QProcessEnvironment DesktopEndToEndTest::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_QPA_PLATFORM")); // the real X server
    return environment;
}

void DesktopEndToEndTest::initTestCase()
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
    m_program.setProcessEnvironment(environment());
    m_program.start(QStringLiteral(PLINK_EXECUTABLE), {});
    QVERIFY(m_program.waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(playerctl({QStringLiteral("status")}) == QLatin1String("Stopped"), 15000);
    m_window = run(QStringLiteral("xdotool"), {"search", "--onlyvisible", "--pid", QString::number(m_program.processId())})
                   .section(QLatin1Char('\n'), 0, 0);
    QVERIFY(!m_window.isEmpty());
}

void DesktopEndToEndTest::cleanupTestCase()
{
    if (m_program.state() != QProcess::NotRunning) {
        playerctl({QStringLiteral("stop")});
        m_program.kill();
        m_program.waitForFinished();
    }
}

void DesktopEndToEndTest::mediaControlsDriveThePlayer()
{
    MonitorRecorder recorder;
    QVERIFY(recorder.start());

    playerctl({QStringLiteral("play-pause")});
    QTRY_COMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Playing"));
    const double playFrom = recorder.seconds();
    QTest::qWait(2000);
    QCOMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}), QStringLiteral("Tone 1"));
    QVERIFY2(recorder.level(playFrom + 0.5, recorder.seconds()) > 0.02, "no sound while playing");

    playerctl({QStringLiteral("next")});
    QTRY_COMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}), QStringLiteral("Tone 2"));
    QCOMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Playing"));
    playerctl({QStringLiteral("previous")});
    QTRY_COMPARE(playerctl({QStringLiteral("metadata"), QStringLiteral("title")}), QStringLiteral("Tone 1"));

    playerctl({QStringLiteral("position"), QStringLiteral("12")});
    QTRY_VERIFY(playerctl({QStringLiteral("position")}).toDouble() >= 11.5);

    playerctl({QStringLiteral("play-pause")});
    QTRY_COMPARE(playerctl({QStringLiteral("status")}), QStringLiteral("Paused"));
    QTest::qWait(1000);
    const double pausedFrom = recorder.seconds();
    QTest::qWait(2000);
    QVERIFY2(recorder.level(pausedFrom, recorder.seconds()) < 0.005, "sound after pause");

    // Loop and shuffle are saved as the menu commands save them.
    playerctl({QStringLiteral("loop"), QStringLiteral("None")});
    playerctl({QStringLiteral("shuffle"), QStringLiteral("On")});
    QTRY_VERIFY(!storedSettings().loopTracks && storedSettings().shuffleTracks);
    QCOMPARE(playerctl({QStringLiteral("loop")}), QStringLiteral("None"));
    QCOMPARE(playerctl({QStringLiteral("shuffle")}), QStringLiteral("On"));
}

void DesktopEndToEndTest::aSecondLaunchRaisesTheFirst()
{
    run(QStringLiteral("xdotool"), {"windowminimize", "--sync", m_window});
    QTRY_VERIFY(run(QStringLiteral("xprop"), {"-id", m_window, "WM_STATE"}).contains(QLatin1String("Iconic")));

    QProcess second;
    second.setProcessEnvironment(environment());
    QElapsedTimer timer;
    timer.start();
    second.start(QStringLiteral(PLINK_EXECUTABLE), {});
    QVERIFY(second.waitForFinished(10000));
    QCOMPARE(second.exitCode(), 0);
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(QString::fromUtf8(second.readAllStandardOutput()).contains(QLatin1String("already running")));

    QTRY_VERIFY(run(QStringLiteral("xprop"), {"-id", m_window, "WM_STATE"}).contains(QLatin1String("Normal")));
    QCOMPARE(m_program.state(), QProcess::Running);
}

PLINK_TEST_MAIN_WITH(QApplication, DesktopEndToEndTest)
#include "test_desktop_e2e.moc"
