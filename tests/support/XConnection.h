#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>
#include <chrono>
#include <optional>
#include <string_view>
#include <xcb/xcb.h>

namespace morvane {

/// A test's own connection to an X server: looks at the screen as another program does.
class XConnection {
public:
    /// Throws std::runtime_error if the server cannot be reached.
    explicit XConnection(const QString &display);
    ~XConnection();
    XConnection(const XConnection &) = delete;
    XConnection &operator=(const XConnection &) = delete;

    xcb_connection_t *handle() const { return m_connection; }
    xcb_window_t root() const { return m_root; }
    xcb_atom_t atom(std::string_view name) const;

    /// The 32-bit values of a window's property; empty if it is not set.
    QList<uint32_t> property(xcb_window_t window, std::string_view name) const;
    /// The bytes of a window's property, such as a text; empty if it is not set.
    QByteArray bytes(xcb_window_t window, std::string_view name) const;
    /// The window that has the focus by the window manager's word, 0 if none.
    xcb_window_t activeWindow() const { return property(m_root, "_NET_ACTIVE_WINDOW").value(0); }

    /// A plain window of another program; it lasts as long as the connection.
    xcb_window_t openWindow() const;

    /// A window that is never shown, to own or to ask for a selection.
    xcb_window_t openHiddenWindow() const;

    /// The answer to one who asks for a selection, as far as it repeats the question: it refuses.
    static xcb_selection_notify_event_t refusalOf(const xcb_selection_request_event_t &request);

    QImage screenshot() const;

    /// The clipboard's text, from whoever owns it; nothing without an owner or an answer in time.
    std::optional<QString> clipboardText() const;

private:
    xcb_connection_t *m_connection;
    xcb_window_t m_root;
    QSize m_size;
};

} // namespace morvane
