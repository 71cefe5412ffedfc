#pragma once

#include "platform/linux/desktop/XDisplay.h"

#include <QList>
#include <QRect>
#include <QString>
#include <optional>

namespace morvane {

/// A window that the window manager looks after.
struct XWindow {
    xcb_window_t window = XCB_NONE;
    qint64 pid = 0;
    QString title;
    QRect frame;            ///< Its inside, from the top left of the root.
    bool isOrdinary = true; ///< No panel, dock or desktop.
    bool isShown = true;    ///< Neither minimized nor on another virtual desktop.
};

/// All of them, the topmost first.
QList<XWindow> stackedWindows(const XDisplay &display);

/// The window that has the focus.
std::optional<XWindow> activeWindow(const XDisplay &display);

/// The window and those around it, from within, without the root. The last is what the root holds: the frame
/// that the window manager has put around a program's window.
QList<xcb_window_t> withAncestors(const XDisplay &display, xcb_window_t window);

/// The frontmost of the windows that the root holds at a place of it, those among them that no window manager
/// looks after. Windows that let clicks through do not count.
xcb_window_t childOfRootAt(const XDisplay &display, QPoint place);

/// Whether keys go to this window or to one inside of it. The window manager names the active window before
/// the server gives it the keyboard.
bool hasKeyboard(const XDisplay &display, xcb_window_t window);

} // namespace morvane
