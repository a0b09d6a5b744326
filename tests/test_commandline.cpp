// What the arguments ask for, and the real program driven from a shell.
#include "app/commandline.h"
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QDir>
#include <QProcess>

using PlayerFixture::run;

class CommandLineTest : public QObject
{
    Q_OBJECT

private slots:
    // Each parse: commands | files | may start the player | exit status | first line printed (help, version or a mistake).
    void argumentsAskFor_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("is");
        for (const auto& [arguments, is] : {
                 std::pair{"a.mp3 --previous b --next --pause", "Previous,Next,Pause | a.mp3,b | 1 | 0 | "},
                 {"--stop --play-pause", "Stop,PlayPause |  | 1 | 0 | "},
                 {"-platform offscreen --style x -style=x -reverse a", " | a | 1 | 0 | "},
                 {"--stop -- -x.mp3 --help", "Stop | -x.mp3,--help | 1 | 0 | "},
                 {"-h --bogus", " |  | 1 | 0 | Usage: plinkbox [OPTION]... [FILE]..."},
                 {"--version", " |  | 1 | 0 | plinkBox " PLINK_VERSION},
                 {"-x.mp3 --help", " |  | 1 | 2 | plinkbox: unknown option '-x.mp3' (see plinkbox --help)"}})
            QTest::newRow(arguments) << QString::fromLatin1(arguments) << QString::fromLatin1(is);
    }
    void argumentsAskFor()
    {
        QFETCH(QString, arguments);
        const CommandLine line = CommandLine::parse(arguments.split(u' '));
        QTEST(QStringList({line.commands().join(','), line.files().join(','), QString::number(line.startsPlayer()),
                           QString::number(line.exitStatus()), line.message().section(u'\n', 0, 0)}).join(" | "), "is");
    }

    // No player: --stop fails, help needs no display; --play starts one, and later launches drive it, files before commands.
    void drivesTheRunningPlayer()
    {
        if (AudioFixtures::MonitorRecorder::source().isEmpty())
            QSKIP("needs the test desktop (scripts/testenv)");
        const QString folder = TestEnvironment::documents();
        const QStringList tones = PlayerFixture::makeTones(folder, 2, 30);
        QVERIFY(tones.size() == 2 && AudioFixtures::makeTone(folder + "/-x.mp3", AudioFixtures::Tone(30)));
        Config config;
        PlayerFixture::addPlaylist(config, QStringLiteral("Tones"), tones);
        config.saveSettings();
        for (const char* name : {"DISPLAY", "QT_QPA_PLATFORM", "WAYLAND_DISPLAY"})
            qunsetenv(name);
        QCOMPARE(run(PLINK_EXECUTABLE, {"--stop"}), std::pair(1, QString("plinkBox is not running.\n")));
        QCOMPARE(std::pair(run(PLINK_EXECUTABLE, {"--help"}).first, run(PLINK_EXECUTABLE, {"--bogus"}).first), std::pair(0, 2));

        // "Playing Tone 1": titles as in the playlist; "Track" for a file without tags.
        const auto now = [] { return run("playerctl", {"-p", "plinkbox", "metadata", "-f", "{{status}} {{title}}"}).second; };
        QProcess player; // killed, if still running, when the test ends
        player.start(QStringLiteral(PLINK_EXECUTABLE), {"-platform", "offscreen", "--play"});
        QTRY_COMPARE_WITH_TIMEOUT(now(), QStringLiteral("Playing Tone 1\n"), 10000);
        QDir::setCurrent(folder);
        for (const auto& [arguments, state] : {std::pair{QStringList{"--", "-x.mp3"}, "Playing Track\n"},
                                               {{"--pause"}, "Paused Track\n"}, {{"--play-pause"}, "Playing Track\n"},
                                               {{"--next"}, "Playing Tone 1\n"}, // the playlist loops
                                               // enough files that reading their tags outlasts a command
                                               {QStringList(1000, tones.at(1)) << "--pause", "Paused Track\n"}}) {
            QCOMPARE(run(PLINK_EXECUTABLE, arguments).first, 0);
            QTRY_COMPARE(now(), QString::fromLatin1(state));
        }
    }
};

PLINK_TEST_MAIN_WITH(QApplication, CommandLineTest)
#include "test_commandline.moc"
