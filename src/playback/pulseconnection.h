#pragma once

#include <QString>

#include <functional>

struct pa_context;
struct pa_mainloop_api;
struct pa_threaded_mainloop;

// One client connection to the sound server (PulseAudio, or PipeWire's pulse
// server) with its own event thread. Everything that touches the context or
// its streams holds the lock; callbacks run on the event thread, which holds
// it already. The connection is made on first use and made again after the
// server went away.
class PulseConnection
{
public:
    explicit PulseConnection(const char* name);
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    // Connects unless connected; call with the lock held. False (and why in
    // *error) when no server answers.
    bool ensureConnected(QString* error);
    pa_context* context() const { return m_context; }
    // The default output's own rate, so that the server need not resample.
    int rate() const { return m_rate; }

    void lock();
    void unlock();
    // Wakes a thread blocked in wait(); called from event-thread callbacks.
    void signal();
    void wait();
    // The event thread's loop, for events of one's own; call with the lock held.
    pa_mainloop_api* api() const;

    // Called on the event thread when a working connection fails.
    std::function<void()> onLost;

private:
    static void stateChanged(pa_context* context, void* self);
    void disconnect();

    pa_threaded_mainloop* m_loop = nullptr;
    pa_context* m_context = nullptr;
    const char* m_name;
    int m_rate = 48000;
    bool m_ready = false;
};

// Holds a connection's lock for a scope.
class PulseLocker
{
public:
    explicit PulseLocker(PulseConnection& connection) : m_connection(connection) { m_connection.lock(); }
    ~PulseLocker() { m_connection.unlock(); }
    PulseLocker(const PulseLocker&) = delete;
    PulseLocker& operator=(const PulseLocker&) = delete;

private:
    PulseConnection& m_connection;
};
