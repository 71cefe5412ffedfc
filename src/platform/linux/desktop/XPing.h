#pragma once

#include "platform/linux/desktop/XDisplay.h"

#include <QList>
#include <chrono>
#include <memory>
#include <stop_token>

namespace morvane {

/// Asks the programs of windows whether they have read all that the server has sent them by now, keys among
/// it. Programs answer the ping of window managers in its turn among their events. One thread.
class XPing {
public:
    enum class State {
        answered, ///< By all; windows that are gone count as well.
        waiting,
        unknown, ///< Some programs do not know the question; all others have answered it.
    };

    /// Asks. `stop` ends the waiting for the server.
    XPing(const QList<xcb_window_t> &windows, const std::stop_token &stop);

    /// As it is now; does not wait.
    State state();
    /// Waits until no answer is missing, or `limit` is over.
    State wait(std::chrono::milliseconds limit);

private:
    void ask(xcb_window_t window);
    /// The window that an event tells to have answered or to be gone.
    xcb_window_t doneBy(const xcb_generic_event_t &event) const;

    /// Its own: nobody else is to be told of every window on the desktop.
    const std::unique_ptr<XDisplay> m_display;
    xcb_atom_t m_protocols = XCB_ATOM_NONE;
    xcb_atom_t m_ping = XCB_ATOM_NONE;
    uint32_t m_token = 0; ///< Tells the answers from those to others, earlier ones of ours among them.
    QList<xcb_window_t> m_waiting;
    bool m_isAnyMute = false;
};

} // namespace morvane
