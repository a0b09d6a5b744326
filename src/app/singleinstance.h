#pragma once

#include <QLockFile>

#include <memory>

// One plinkBox per user, so that two processes never write the same files.
// The first takes a lock in the user's runtime folder and keeps it for its
// life; a later one asks the running player to show its window and leaves.
class SingleInstance
{
public:
    SingleInstance();
    ~SingleInstance();

    // True when this process may run. Otherwise the running player has been
    // asked (over the session bus) to raise its window.
    bool claim();

private:
    std::unique_ptr<QLockFile> m_lock;
};
