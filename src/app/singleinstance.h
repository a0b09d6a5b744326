#pragma once

#include <QList>
#include <QLockFile>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <memory>

class QObject;

// One plinkBox per user, so that two processes never write the same files.
// The first takes a lock in the user's runtime folder and keeps it for its
// life; a later one hands its files and commands to the running player (or
// asks it to show its window) over the session bus, and leaves.
class SingleInstance
{
public:
    SingleInstance();
    ~SingleInstance();

    // True when this process may run the player. Needs no application object.
    bool claim();

    // A later launch's side, with an application object: hands the files
    // over, then sends the commands (Player method names) in order; with
    // neither, asks the running player to raise its window. Prints what
    // happened when there is something to say; returns the exit status.
    int handOver(const QList<QUrl>& files, const QStringList& commands);

    // The running player's side: open is called with the files of a later
    // launch, and calls its second argument once they are in the playlist,
    // which the later launch waits for before it sends its commands.
    void serve(std::function<void(const QList<QUrl>&, std::function<void()>)> open);

    static constexpr const char* launchPath = "/org/plinkbox/Launch";
    static constexpr const char* launchInterface = "org.plinkbox.Launch";

private:
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<QObject> m_receiver;
};
