#include "app/commandline.h"

#include <algorithm>
#include <iterator>

namespace {

struct Option {
    const char* name;
    const char* method; // on org.mpris.MediaPlayer2.Player
};

constexpr Option commandOptions[] = {
    {"--play", "Play"}, {"--pause", "Pause"}, {"--play-pause", "PlayPause"},
    {"--stop", "Stop"}, {"--next", "Next"},   {"--previous", "Previous"},
};

// Qt's options on Linux, as QApplication and its X11 platform take them out
// of the list: followed by a value, and alone (the last three as "-style=NAME"
// too). Qt reads "--name" as "-name".
const QStringList qtOptionsWithValue = {
    QStringLiteral("platform"),    QStringLiteral("platformpluginpath"), QStringLiteral("platformtheme"),
    QStringLiteral("plugin"),      QStringLiteral("qwindowgeometry"),    QStringLiteral("qwindowtitle"),
    QStringLiteral("qwindowicon"), QStringLiteral("session"),            QStringLiteral("style"),
    QStringLiteral("stylesheet"),  QStringLiteral("geometry"),           QStringLiteral("title"),
    QStringLiteral("icon"),        QStringLiteral("display"),            QStringLiteral("name"),
    QStringLiteral("visual"),
};
const QStringList qtFlags = {QStringLiteral("reverse"), QStringLiteral("widgetcount"), QStringLiteral("testability"),
                             QStringLiteral("nograb"),  QStringLiteral("dograb"),      QStringLiteral("style="),
                             QStringLiteral("stylesheet="), QStringLiteral("qmljsdebugger=")};

const char* const help = R"(Usage: plinkbox [OPTION]... [FILE]...
Plays the files given, or drives the plinkBox that is running.
Files, folders and playlist files (M3U, M3U8, PLS) may be given.

  -h, --help        print this help and exit
      --version     print the version and exit
      --play        play (starting plinkBox if it is not running)
      --pause       pause
      --play-pause  play or pause (starting plinkBox if it is not running)
      --stop        stop
      --next        go to the next track
      --previous    go to the previous track
      --            end of the options: what follows is a file, even -x.mp3

Files given are added to the current playlist and the first of them plays;
then the commands apply, in the order given. Without either, a running
plinkBox brings its window forward.)";

} // namespace

CommandLine CommandLine::parse(const QStringList& arguments)
{
    CommandLine line;
    const auto stop = [&line](Action action, const QString& message) {
        line.m_action = action;
        line.m_message = message;
        return line;
    };
    bool options = true;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (!options || !argument.startsWith(u'-')) {
            line.m_files.append(argument);
            continue;
        }
        if (argument == QLatin1String("--")) {
            options = false;
            continue;
        }
        if (argument == QLatin1String("-h") || argument == QLatin1String("--help"))
            return stop(Action::help, QString::fromUtf8(help));
        if (argument == QLatin1String("--version"))
            return stop(Action::version, QStringLiteral("plinkBox " PLINK_VERSION));
        const auto command = std::find_if(std::begin(commandOptions), std::end(commandOptions),
                                          [&](const Option& option) { return argument == QLatin1String(option.name); });
        if (command != std::end(commandOptions)) {
            line.m_commands.append(QString::fromLatin1(command->method));
            continue;
        }
        const QString qtName = argument.mid(argument.startsWith(QLatin1String("--")) ? 2 : 1);
        if (qtOptionsWithValue.contains(qtName)) {
            ++i; // and its value
            continue;
        }
        const qsizetype equals = qtName.indexOf(u'='); // "-style=fusion" is found as "style="
        if (qtFlags.contains(equals < 0 ? qtName : qtName.left(equals + 1)))
            continue;
        return stop(Action::error, QStringLiteral("plinkbox: unknown option '%1' (see plinkbox --help)").arg(argument));
    }
    return line;
}

bool CommandLine::startsPlayer() const
{
    return !m_files.isEmpty() || m_commands.isEmpty() || m_commands.contains(QLatin1String("Play"))
        || m_commands.contains(QLatin1String("PlayPause"));
}
