#include "platform/linux/desktop/ScreenWindows.h"

#include <algorithm>
#include <cmath>

namespace morvane {
namespace {

/// Pixels that the frame of a window's own takes on each side; more is no frame.
constexpr qreal widestFrame = 16;

} // namespace

ScreenWindows::ScreenWindows(const XDisplay *display) : m_display(display)
{
    if (!display)
        return;
    m_origin = display->origin();
    m_active = activeWindow(*display);
    m_stacked = stackedWindows(*display);
}

std::shared_ptr<const AccessibleWindow> ScreenWindows::find(const ToldWindow &told) const
{
    auto found = std::make_shared<AccessibleWindow>();
    found->pid = told.pid;
    found->tellsShowing = !told.isGtk4;
    found->isRelative = told.isGtk4;
    const auto isMeant = [&](const XWindow &window) {
        return window.pid == told.pid &&
               (told.isActive && m_active ? window.window == m_active->window : window.title == told.title);
    };
    const auto own = std::find_if(m_stacked.begin(), m_stacked.end(), isMeant);
    if (own == m_stacked.end()) {
        // Menus and the like are no windows to the window manager.
        found->frame = told.isGtk4 ? QRectF() : told.extents.translated(-m_origin);
        return found;
    }
    found->id = own->window;
    found->frame = QRectF(own->frame).translated(-m_origin);
    // A window that draws its own title bar has its shadow within what the server takes for the window.
    const QList<uint32_t> shadow = m_display->values(own->window, "_GTK_FRAME_EXTENTS");
    const QRectF drawn = found->frame.adjusted(shadow.value(0), shadow.value(2), -qreal(shadow.value(1)),
                                               -qreal(shadow.value(3)));
    // Programs that are drawn larger count in larger units.
    const qreal ratio = told.extents.width() > 0 ? drawn.width() / told.extents.width() : 1;
    const qreal steps = std::round(ratio * 4) / 4;
    if (steps >= 1.25 && std::abs(ratio - steps) < 0.05)
        found->scale = steps;
    // Where there is no shadow it has a frame of its own instead, from whose inside it counts.
    const QSizeF frame =
        told.extents.isEmpty() ? QSizeF() : drawn.size() - told.extents.size() * found->scale;
    found->offset = drawn.topLeft() + QPointF(std::clamp<qreal>(frame.width() / 2, 0, widestFrame),
                                              std::clamp<qreal>(frame.height() / 2, 0, widestFrame));
    return found;
}

} // namespace morvane
