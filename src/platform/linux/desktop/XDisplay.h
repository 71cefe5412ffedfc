#pragma once

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stop_token>
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
/// it, so that threads share nothing. All questions fail quietly when the server goes away. They throw
/// DisplaySilent, all further ones at once, where it does not answer in time, or in half a second after a
/// stop: a program can have the server to itself, and then hang. One thread.
class XDisplay {
public:
    /// For one answer.
    static constexpr std::chrono::seconds usualPatience{10};

    /// Nothing where there is no X server, and on Wayland, where the one that may be there shows little.
    static std::unique_ptr<XDisplay> open(std::stop_token stop = {},
                                          std::chrono::milliseconds patience = usualPatience);
    /// A silent server does what it has been told as soon as it can.
    ~XDisplay();
    XDisplay(const XDisplay &) = delete;
    XDisplay &operator=(const XDisplay &) = delete;

    xcb_connection_t *connection() const { return m_connection; }
    xcb_window_t root() const { return m_screen->root; }
    const xcb_screen_t &screen() const { return *m_screen; }
    /// To be asked before a request of the extension is made, which else would wait without end.
    bool hasExtension(xcb_extension_t *extension) const;

    /// Waits for the answer to a request; nothing if it is an error.
    template <class Reply, class Cookie> XReply<Reply> reply(Cookie cookie) const
    {
        return XReply<Reply>(static_cast<Reply *>(waitForReply(cookie.sequence)));
    }
    /// Runs `work`, which waits for the server in its own ways, on another thread. The connection is of no
    /// use any more when it takes too long.
    void attend(const std::function<void()> &work) const;

    const std::stop_token &stop() const { return m_stop; }

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
    XDisplay(xcb_connection_t *connection, const xcb_screen_t *screen, std::stop_token stop,
             std::chrono::milliseconds patience);

    void *waitForReply(unsigned int sequence) const;

    xcb_connection_t *m_connection;
    const xcb_screen_t *m_screen;
    const std::stop_token m_stop;
    const std::chrono::milliseconds m_patience;
    mutable bool m_isSilent = false;
};

} // namespace morvane
