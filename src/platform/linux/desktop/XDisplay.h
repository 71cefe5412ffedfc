#pragma once

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace morvane {

/// A reply or an event of the X server.
template <class T> struct XFree {
    void operator()(T *memory) const { std::free(memory); }
};
template <class T> using XReply = std::unique_ptr<T, XFree<T>>;
template <class T> XReply<T> xReply(T *reply)
{
    return XReply<T>(reply);
}

/// A connection of its own to the X server of the environment. Opened for one piece of work and closed with
/// it, so that threads share nothing. All questions fail quietly when the server goes away. One thread.
class XDisplay {
public:
    /// Nothing where there is no X server, and on Wayland, where the one that may be there shows little.
    static std::unique_ptr<XDisplay> open();
    ~XDisplay();
    XDisplay(const XDisplay &) = delete;
    XDisplay &operator=(const XDisplay &) = delete;

    xcb_connection_t *connection() const { return m_connection; }
    xcb_window_t root() const { return m_screen->root; }
    const xcb_screen_t &screen() const { return *m_screen; }
    bool hasExtension(xcb_extension_t *extension) const;

    xcb_atom_t atom(std::string_view name) const;
    /// The 32-bit values of a window's property; empty if it is not set.
    QList<uint32_t> values(xcb_window_t window, std::string_view name) const;
    /// The bytes of a window's property, whatever their type.
    QByteArray bytes(xcb_window_t window, std::string_view name) const;
    bool exists(xcb_window_t window) const;
    /// A window's inside, from the top left of the root.
    QRect geometry(xcb_window_t window) const;

    /// The monitors, the primary one first, from the top left of the root.
    QList<QRect> monitors() const;
    /// What the coordinates of the tools are counted from: the top left of the primary monitor.
    QPoint origin() const;

    void sendToWindowManager(std::string_view message, xcb_window_t window,
                             const QList<uint32_t> &data) const;
    /// Waits until the server has done all that was asked of it.
    void synchronize() const;

private:
    XDisplay(xcb_connection_t *connection, const xcb_screen_t *screen);

    xcb_connection_t *m_connection;
    const xcb_screen_t *m_screen;
};

} // namespace morvane
