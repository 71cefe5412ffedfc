#include "platform/linux/LinuxWindowRaiser.h"

#include <QGuiApplication>
#include <QWindow>
#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace morvane {

namespace {

/// Source indication of a request that comes from the user and not from the program's own wish.
constexpr uint32_t fromUser = 2;

xcb_connection_t *xConnection()
{
    const auto *x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t *connection, std::string_view name)
{
    const auto cookie = xcb_intern_atom(connection, 0, uint16_t(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : XCB_ATOM_NONE;
}

xcb_window_t rootWindow(xcb_connection_t *connection)
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

void sendToWindowManager(xcb_connection_t *connection, std::string_view message, WId window,
                         const std::array<uint32_t, 5> &data)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = xcb_window_t(window);
    event.type = atom(connection, message);
    std::copy(data.begin(), data.end(), event.data.data32);
    xcb_send_event(connection, 0, rootWindow(connection),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(connection);
}

/// The time of the user's action, which a startup identifier carries at its end ("…_TIME12345"); 0 if
/// unknown.
uint32_t userTime(const QByteArray &startupID)
{
    const qsizetype mark = startupID.lastIndexOf("_TIME");
    return mark < 0 ? XCB_CURRENT_TIME : startupID.mid(mark + 5).toUInt();
}

/// Tells the desktop that the start has been answered, so that its busy pointer ends: a zero-terminated text
/// in messages of 20 bytes, as the startup notification protocol says.
void finishStartup(xcb_connection_t *connection, const QByteArray &startupID)
{
    QByteArray quoted = startupID;
    quoted.replace('\\', "\\\\").replace('"', "\\\"");
    const QByteArray text = "remove: ID=\"" + quoted + "\"" + '\0';
    const xcb_window_t root = rootWindow(connection);
    const xcb_window_t sender = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, sender, root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = sender;
    event.type = atom(connection, "_NET_STARTUP_INFO_BEGIN");
    for (qsizetype at = 0; at < text.size(); at += qsizetype(sizeof event.data.data8)) {
        const QByteArray part = text.mid(at, sizeof event.data.data8);
        std::fill(std::begin(event.data.data8), std::end(event.data.data8), 0);
        std::copy(part.begin(), part.end(), event.data.data8);
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                       reinterpret_cast<const char *>(&event));
        event.type = atom(connection, "_NET_STARTUP_INFO");
    }
    xcb_destroy_window(connection, sender);
    xcb_flush(connection);
}

} // namespace

void LinuxWindowRaiser::activate(QWindow &window, const ActivationToken &token)
{
    if (!window.isVisible())
        window.show();
    xcb_connection_t *const connection = xConnection();
    if (connection == nullptr) {
        // Qt takes the token of a Wayland activation from the environment.
        if (!token.xdgToken.isEmpty())
            qputenv("XDG_ACTIVATION_TOKEN", token.xdgToken);
        window.requestActivate();
        return;
    }
    sendToWindowManager(connection, "_NET_ACTIVE_WINDOW", window.winId(),
                        {fromUser, userTime(token.startupID)});
    raiseWithoutFocus(window);
    if (!token.startupID.isEmpty())
        finishStartup(connection, token.startupID);
}

void LinuxWindowRaiser::raiseWithoutFocus(QWindow &window)
{
    if (xcb_connection_t *const connection = xConnection()) {
        sendToWindowManager(connection, "_NET_RESTACK_WINDOW", window.winId(),
                            {fromUser, XCB_NONE, XCB_STACK_MODE_ABOVE});
    } else {
        window.raise();
    }
}

} // namespace morvane
