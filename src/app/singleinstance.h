#pragma once

#include <QList>
#include <QLockFile>
#include <QUrl>

#include <functional>
#include <memory>

class QObject;

// One plinkBox per user, so that two processes never write the same files.
// The first takes a lock in the user's runtime folder and keeps it for its
// life; a later one hands its files to the running player (or asks it to show
// its window) over the session bus, and leaves.
class SingleInstance
{
public:
    SingleInstance();
    ~SingleInstance();

    // True when this process may run. Otherwise the running player has been
    // given the files, or asked to raise its window when there are none.
    bool claim(const QList<QUrl>& files = {});

    // The running player's side: open is called with the files of a later launch.
    void serve(std::function<void(const QList<QUrl>&)> open);

    static constexpr const char* launchPath = "/org/plinkbox/Launch";
    static constexpr const char* launchInterface = "org.plinkbox.Launch";

private:
    std::unique_ptr<QLockFile> m_lock;
    std::unique_ptr<QObject> m_receiver;
};
