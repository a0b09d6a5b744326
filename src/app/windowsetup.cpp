#include "app/windowsetup.h"

#include <QGuiApplication>
#include <QWidget>

#ifdef PLINK_HAVE_XCB
#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>

namespace {

xcb_connection_t* x11Connection()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t* connection, const char* name)
{
    const xcb_intern_atom_cookie_t cookie = xcb_intern_atom(connection, 0, uint16_t(strlen(name)), name);
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    const xcb_atom_t result = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    free(reply);
    return result;
}

xcb_window_t rootWindow(xcb_connection_t* connection)
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

} // namespace

bool compositorRunning()
{
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return true;
    xcb_connection_t* connection = x11Connection();
    if (!connection)
        return false;
    // A compositing manager owns the selection _NET_WM_CM_S<screen>.
    const xcb_atom_t selection = atom(connection, "_NET_WM_CM_S0");
    if (selection == XCB_ATOM_NONE)
        return false;
    xcb_get_selection_owner_reply_t* reply =
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr);
    const bool owned = reply && reply->owner != XCB_NONE;
    free(reply);
    return owned;
}

void showOnAllWorkspaces(QWidget* window)
{
    xcb_connection_t* connection = x11Connection();
    if (!connection)
        return;
    // EWMH: desktop 0xFFFFFFFF means every desktop; a client asks the window
    // manager through a message to the root window.
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = xcb_window_t(window->winId());
    message.type = atom(connection, "_NET_WM_DESKTOP");
    message.data.data32[0] = 0xFFFFFFFF;
    message.data.data32[1] = 1; // from an application
    xcb_send_event(connection, 0, rootWindow(connection),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection);
}

#else

bool compositorRunning()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

void showOnAllWorkspaces(QWidget*) {}

#endif
