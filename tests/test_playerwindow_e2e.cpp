// The real program on the test desktop, driven as a person would through xdotool, heard through the null sink's monitor.
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>

using AudioFixtures::MonitorRecorder;

// Blocking: the event loop turning while xdotool runs made Ctrl+Q miss the player in some runs.
static QString run(const QString& program, const QStringList& arguments)
{
    QProcess tool;
    tool.start(program, arguments);
    tool.waitForFinished(20000);
    return QString::fromLocal8Bit(tool.readAllStandardOutput()).trimmed();
}
static QString xdotool(const QStringList& arguments) { return run("xdotool", arguments); }

class PlayerWindowEndToEndTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    QProcess m_program; // killed, if still running, when the test ends
    QString m_window;

    QRect windowGeometry(const QString& window = {})
    {
        QHash<QString, int> values;
        for (const QString& line : xdotool({"getwindowgeometry", "--shell", window.isEmpty() ? m_window : window}).split(u'\n'))
            values.insert(line.section(u'=', 0, 0), line.section(u'=', 1).toInt());
        return QRect(values.value("X"), values.value("Y"), values.value("WIDTH"), values.value("HEIGHT"));
    }
    QString windowProperty(const char* name) { return run("xprop", {"-id", m_window, name}); }

private slots:
    // On X even from a Wayland session; saved enlarged and floating, it starts so; play is heard, Space silences it; it
    // snaps to a corner it is dragged near, and its settings open beside it, in the desktop's German; a second launch raises the minimised first
    // or plays the file given, and exits; Ctrl+Q quits, and so does SIGTERM while it plays, cleanly.
    void aWholeSession()
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
            config.setSuperSized(true);
            config.setIsFloating(true);
            config.saveSettings();
        }
        m_program.setProcessChannelMode(QProcess::ForwardedChannels);
        qunsetenv("QT_QPA_PLATFORM"); // the programs started use the real X server, whatever this test uses
        // As on a Wayland session, but with no compositor: the player must still come up, on X.
        qputenv("WAYLAND_DISPLAY", "plinkbox-no-compositor");
        qputenv("XDG_SESSION_TYPE", "wayland");
        qputenv("LANG", "de_DE.UTF-8"); // a German desktop: the windows speak German
        qunsetenv("LANGUAGE");
        m_program.start(QStringLiteral(PLINK_EXECUTABLE), {});
        QVERIFY(m_program.waitForStarted());
        QVERIFY(QTest::qWaitFor([&] {
            m_window = xdotool({"search", "--onlyvisible", "--pid", QString::number(m_program.processId())}).section(u'\n', 0, 0);
            return !m_window.isEmpty() && windowGeometry().width() > 0;
        }, 10000));
        const QRect before = windowGeometry();
        QCOMPARE(before.size(), QSize(404, 144));
        QTRY_VERIFY(windowProperty("_NET_WM_STATE").contains("_NET_WM_STATE_ABOVE"));

        MonitorRecorder ear;
        QVERIFY(ear.start());
        const auto levelAfter = [&](const QStringList& action) { // from 0.6 to 1.6 s after it
            const double mark = ear.seconds();
            xdotool(action);
            QTest::qWait(1600);
            return ear.level(mark + 0.6, mark + 1.6);
        };
        // A click on the play button's centre.
        QVERIFY2(levelAfter({"mousemove", "--window", m_window, "288", "51", "click", "1"}) > 0.05, "no sound after play");
        xdotool({"windowactivate", "--sync", m_window});
        QVERIFY2(levelAfter({"key", "space"}) < 0.01, "still sounding after Space");

        // Pulled by the background to 6 points from the left and 7 from the top.
        const QPoint grab(180, 135);
        xdotool({"mousemove", "--window", m_window, QString::number(grab.x()), QString::number(grab.y())});
        xdotool({"mousedown", "1"});
        for (int step = 1; step <= 10; ++step) {
            const QPoint at = before.topLeft() + grab + (QPoint(6, 7) - before.topLeft()) * step / 10;
            xdotool({"mousemove", QString::number(at.x()), QString::number(at.y())});
            QTest::qWait(30);
        }
        xdotool({"mouseup", "1"});
        QTRY_COMPARE(windowGeometry().topLeft(), QPoint(0, 0));
        xdotool({"key", "ctrl+comma"});
        QString settings;
        QVERIFY(QTest::qWaitFor([&] { return !(settings = xdotool({"search", "--onlyvisible", "--name", "^Einstellungen$"})).isEmpty(); }, 5000));
        const int gap = windowGeometry(settings).left() - windowGeometry().right();
        QVERIFY2(gap > 0 && gap < 40, qPrintable(QString::number(gap))); // beside it, not merely clear of it

        xdotool({"windowminimize", "--sync", m_window});
        QTRY_VERIFY(windowProperty("WM_STATE").contains(QLatin1String("Iconic")));
        QProcess second;
        second.start(QStringLiteral(PLINK_EXECUTABLE), {});
        QVERIFY(second.waitForFinished(10000) && second.exitCode() == 0);
        QCOMPARE(QString::fromUtf8(second.readAllStandardOutput()),
                 QStringLiteral("plinkBox is already running; its window was brought forward.\n"));
        QTRY_VERIFY(windowProperty("WM_STATE").contains(QLatin1String("Normal")));
        QVERIFY2(levelAfter({"exec", PLINK_EXECUTABLE, tones.at(1)}) > 0.05, "no sound from a file given to a second launch");

        xdotool({"windowactivate", "--sync", m_window});
        xdotool({"key", "ctrl+q"});
        QVERIFY2(m_program.waitForFinished(5000), "Ctrl+Q did not end the program");

        m_program.start(QStringLiteral(PLINK_EXECUTABLE), {tones.at(0)});
        QVERIFY2(levelAfter({"sleep", "0"}) > 0.05, "no sound from a file given at the start");
        m_program.terminate();
        QVERIFY(m_program.waitForFinished(5000));
        QVERIFY2(m_program.exitStatus() == QProcess::NormalExit && m_program.exitCode() == 0, "SIGTERM did not quit cleanly");
    }
};

PLINK_TEST_MAIN_WITH(QApplication, PlayerWindowEndToEndTest)
#include "test_playerwindow_e2e.moc"
