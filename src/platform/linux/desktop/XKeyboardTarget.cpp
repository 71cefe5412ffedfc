#include "platform/linux/desktop/XKeyboardTarget.h"

#include "platform/linux/desktop/XWindows.h"

#include <unistd.h>

namespace morvane {

XKeyboardTarget::XKeyboardTarget(const XDisplay &display)
    : m_display(display), m_focus(focus()), m_topLevel(topLevelOf(m_focus)), m_target(m_topLevel.window),
      m_beganInFrame(m_topLevel.isFrameAlone)
{
}

KeyboardHolder XKeyboardTarget::holder()
{
    // Programs move the keyboard within a window; the server is asked who that belongs to once for each move.
    if (const xcb_window_t now = focus(); now != m_focus) {
        m_focus = now;
        m_topLevel = topLevelOf(now);
    }
    if (m_topLevel.isOwn)
        return KeyboardHolder::ownWindow;
    // A window that is minimized leaves the keyboard to its frame, until the manager gives it to another.
    const bool isLeft = m_topLevel.isFrameAlone && !m_beganInFrame;
    return m_topLevel.window == m_target && !isLeft ? KeyboardHolder::sameWindow
                                                    : KeyboardHolder::otherWindow;
}

xcb_window_t XKeyboardTarget::focus() const
{
    const auto reply =
        m_display.reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_display.connection()));
    return reply ? reply->focus : xcb_window_t(XCB_NONE);
}

XKeyboardTarget::TopLevel XKeyboardTarget::topLevelOf(xcb_window_t window) const
{
    TopLevel found{.window = window};
    for (const xcb_window_t around : withAncestors(m_display, window)) {
        found.window = around;
        found.isFrameAlone = found.isFrameAlone && m_display.values(around, "WM_STATE").isEmpty();
        found.isOwn |= m_display.values(around, "_NET_WM_PID").value(0) == uint32_t(::getpid());
    }
    return found;
}

} // namespace morvane
