#pragma once

#include "platform/linux/desktop/AccessibleWindow.h"
#include "platform/linux/desktop/XWindows.h"

#include <memory>

namespace morvane {

/// What a program tells of one of its windows.
struct ToldWindow {
    qint64 pid = 0;
    bool isGtk4 = false;
    QString title;
    QRectF extents;
    bool isActive = false;
};

/// The windows of all programs, looked at once for all those that a program tells of, which may be a
/// thousand.
class ScreenWindows {
public:
    /// `display` must outlive this; it may be none.
    explicit ScreenWindows(const XDisplay *display);

    /// Where the window that a program tells of really is.
    std::shared_ptr<const AccessibleWindow> find(const ToldWindow &told) const;

private:
    /// Null where it is none of those that the window manager knows, or may be several.
    const XWindow *meant(const ToldWindow &told) const;

    const XDisplay *m_display;
    QPointF m_origin;
    std::optional<XWindow> m_active;
    QList<XWindow> m_stacked;
};

} // namespace morvane
