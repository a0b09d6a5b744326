#pragma once

#include <QString>
#include <QStringList>

// What a launch's arguments ask for. Read before any application object
// exists, so that help, the version and a mistyped option need no display.
class CommandLine
{
public:
    enum class Action { run, help, version, error };

    // arguments: without the program's name. Qt's own options (-platform
    // NAME, -style NAME, ...) are passed over, as QApplication takes them.
    static CommandLine parse(const QStringList& arguments);

    // 0 to run, or after help and the version; 2 after a usage error.
    int exitStatus() const { return m_action == Action::error ? 2 : 0; }
    // Only a launch that would play, or open files, or merely show the
    // window may start the player; the other commands need one running.
    bool startsPlayer() const;

    Action action() const { return m_action; }
    // The player's MPRIS method names (Play, PlayPause, ...), in the order given.
    const QStringList& commands() const { return m_commands; }
    // Files, folders and URLs as given; TrackOpener::fromArgument reads them.
    const QStringList& files() const { return m_files; }
    // What help, the version or an error prints, a line at a time.
    const QString& message() const { return m_message; }

private:
    Action m_action = Action::run;
    QStringList m_commands;
    QStringList m_files;
    QString m_message;
};
