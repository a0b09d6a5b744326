#include "playback/pulseconnection.h"

#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/introspect.h>
#include <pulse/mainloop-api.h>
#include <pulse/thread-mainloop.h>

namespace {

// Fills in the default output's rate, then wakes the waiting thread.
void sinkInfo(pa_context*, const pa_sink_info* info, int eol, void* userdata)
{
    auto* rate = static_cast<std::pair<int*, PulseConnection*>*>(userdata);
    if (info && eol == 0)
        *rate->first = int(info->sample_spec.rate);
    if (eol)
        rate->second->signal();
}

} // namespace

PulseConnection::PulseConnection(const char* name)
    : m_loop(pa_threaded_mainloop_new())
    , m_name(name)
{
    pa_threaded_mainloop_start(m_loop);
}

PulseConnection::~PulseConnection()
{
    lock();
    disconnect();
    unlock();
    pa_threaded_mainloop_stop(m_loop);
    pa_threaded_mainloop_free(m_loop);
}

void PulseConnection::lock()
{
    pa_threaded_mainloop_lock(m_loop);
}

void PulseConnection::unlock()
{
    pa_threaded_mainloop_unlock(m_loop);
}

void PulseConnection::signal()
{
    pa_threaded_mainloop_signal(m_loop, 0);
}

void PulseConnection::wait()
{
    pa_threaded_mainloop_wait(m_loop);
}

pa_mainloop_api* PulseConnection::api() const
{
    return pa_threaded_mainloop_get_api(m_loop);
}

void PulseConnection::disconnect()
{
    if (!m_context)
        return;
    pa_context_set_state_callback(m_context, nullptr, nullptr);
    pa_context_disconnect(m_context);
    pa_context_unref(m_context);
    m_context = nullptr;
    m_ready = false;
}

void PulseConnection::stateChanged(pa_context* context, void* self)
{
    auto* connection = static_cast<PulseConnection*>(self);
    const pa_context_state_t state = pa_context_get_state(context);
    if (state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state))
        connection->signal();
    if (!PA_CONTEXT_IS_GOOD(state) && connection->m_ready) {
        connection->m_ready = false;
        if (connection->onLost)
            connection->onLost();
    }
}

bool PulseConnection::ensureConnected(QString* error)
{
    if (m_context && pa_context_get_state(m_context) == PA_CONTEXT_READY)
        return true;
    disconnect();
    m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), m_name);
    pa_context_set_state_callback(m_context, &PulseConnection::stateChanged, this);
    // Never start a server of our own: a missing one is reported instead.
    if (pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0) {
        for (;;) {
            const pa_context_state_t state = pa_context_get_state(m_context);
            if (state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state))
                break;
            wait();
        }
    }
    if (pa_context_get_state(m_context) != PA_CONTEXT_READY) {
        *error = QStringLiteral("No sound server: %1. Start one (PulseAudio, or PipeWire's pulse server) and play "
                                "again").arg(QString::fromUtf8(pa_strerror(pa_context_errno(m_context))));
        disconnect();
        return false;
    }
    m_ready = true;

    // The default sink's rate: the server's default output plays it untouched.
    std::pair<int*, PulseConnection*> wanted{&m_rate, this};
    pa_operation* operation = pa_context_get_sink_info_by_name(m_context, "@DEFAULT_SINK@", sinkInfo, &wanted);
    while (operation && pa_operation_get_state(operation) == PA_OPERATION_RUNNING)
        wait();
    if (operation)
        pa_operation_unref(operation);
    return true;
}
