#pragma once

#include "platform/InputEvents.h"
#include "platform/linux/desktop/XDisplay.h"

namespace morvane {

/// The window that keys go to, as the server has it: the window manager names the active one a moment later,
/// and what is typed meanwhile is lost or lands elsewhere. One thread.
class XKeyboardTarget {
public:
    /// Remembers the window that has the keyboard now. `display` outlives this.
    explicit XKeyboardTarget(const XDisplay &display);

    KeyboardHolder holder();

private:
    /// A window on the desktop, with what it holds.
    struct TopLevel {
        xcb_window_t window = XCB_NONE;
        bool isOwn = false;
        bool isFrameAlone = true; ///< Nothing that a window manager manages has the focus.
    };

    xcb_window_t focus() const;
    TopLevel topLevelOf(xcb_window_t window) const;

    const XDisplay &m_display;
    xcb_window_t m_focus;
    TopLevel m_topLevel; ///< Around m_focus.
    const xcb_window_t m_target;
    const bool m_beganInFrame;
};

} // namespace morvane
