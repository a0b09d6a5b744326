// The real program on the test desktop, driven as a person would: xdotool
// clicks and keys, the null sink's monitor as the ear.
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>

using AudioFixtures::MonitorRecorder;

static QString xdotool(const QStringList& arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    tool.waitForFinished(20000);
    return QString::fromLocal8Bit(tool.readAllStandardOutput()).trimmed();
}

class PlayerWindowEndToEndTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    QProcess m_program;
    QString m_window;

    bool start()
    {
        m_program.setProcessChannelMode(QProcess::ForwardedChannels);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("QT_QPA_PLATFORM")); // the real X server, whatever this test uses
        m_program.setProcessEnvironment(environment);
        m_program.start(QStringLiteral(PLINK_EXECUTABLE), {});
        const bool shown = m_program.waitForStarted() && QTest::qWaitFor([&] {
            m_window = xdotool({"search", "--onlyvisible", "--pid", QString::number(m_program.processId())})
                           .section(QLatin1Char('\n'), 0, 0);
            return !m_window.isEmpty() && windowGeometry().width() > 0;
        }, 10000);
        QTest::qWait(300); // the set-up after show
        return shown;
    }
    void quit()
    {
        xdotool({"windowactivate", "--sync", m_window});
        xdotool({"key", "ctrl+q"});
        QVERIFY2(m_program.waitForFinished(5000), "Ctrl+Q did not end the program");
    }
    QRect windowGeometry()
    {
        QHash<QString, int> values;
        for (const QString& line : xdotool({"getwindowgeometry", "--shell", m_window}).split(QLatin1Char('\n')))
            values.insert(line.section(QLatin1Char('='), 0, 0), line.section(QLatin1Char('='), 1).toInt());
        return QRect(values.value("X"), values.value("Y"), values.value("WIDTH"), values.value("HEIGHT"));
    }

private slots:
    void cleanup()
    {
        if (m_program.state() != QProcess::NotRunning) {
            m_program.kill();
            m_program.waitForFinished();
        }
    }

    // Click play and hear it, Space pauses, a drag near the corner snaps
    // there; after Ctrl+Q, a saved superSized starts the window 1.5 times larger.
    void playsPausesSnapsAndStartsSuperSized()
    {
        if (MonitorRecorder::source().isEmpty() || qEnvironmentVariableIsEmpty("DISPLAY"))
            QSKIP("needs the test desktop (scripts/testenv)");
        const QStringList tones = PlayerFixture::makeTones(m_toneFolder.path(), 2, 30);
        QCOMPARE(tones.size(), 2);
        {
            // "Tones" is saved before "Untitled": the tones are the first playlist at the next start.
            Config config;
            PlayerFixture::addPlaylist(config, QStringLiteral("Tones"), tones);
            config.setLastSelectedPlaylistID(0);
            config.saveSettings();
        }
        QVERIFY(start());
        const QRect before = windowGeometry();
        QCOMPARE(before.size(), QSize(269, 96));
        MonitorRecorder ear;
        QVERIFY(ear.start());
        const double clicked = ear.seconds();
        xdotool({"mousemove", "--window", m_window, "192", "34", "click", "1"}); // the play button's centre
        QTest::qWait(2500);
        QVERIFY2(ear.level(clicked + 1, clicked + 2.5) > 0.05, "no sound after clicking play");
        xdotool({"windowactivate", "--sync", m_window});
        const double paused = ear.seconds();
        xdotool({"key", "space"});
        QTest::qWait(2500);
        QVERIFY2(ear.level(paused + 1, paused + 2.5) < 0.01, "still sounding after Space");

        // Pull the window by its background to 6 points from the left and 7 from the top.
        const QPoint grab(120, 90);
        xdotool({"mousemove", "--window", m_window, QString::number(grab.x()), QString::number(grab.y())});
        xdotool({"mousedown", "1"});
        for (int step = 1; step <= 10; ++step) {
            const QPoint at = before.topLeft() + grab + (QPoint(6, 7) - before.topLeft()) * step / 10;
            xdotool({"mousemove", QString::number(at.x()), QString::number(at.y())});
            QTest::qWait(30);
        }
        xdotool({"mouseup", "1"});
        QTRY_COMPARE(windowGeometry().topLeft(), QPoint(0, 0));
        quit();

        {
            Config config;
            QVERIFY(!config.superSized());
            config.setSuperSized(true);
            config.saveSettings();
        }
        QVERIFY(start());
        QCOMPARE(windowGeometry().size(), QSize(404, 144));
        quit();
    }
};

PLINK_TEST_MAIN_WITH(QApplication, PlayerWindowEndToEndTest)
#include "test_playerwindow_e2e.moc"
