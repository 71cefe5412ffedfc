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

const XWindow *ScreenWindows::meant(const ToldWindow &told) const
{
    const auto isActive = [this](const XWindow *window) {
        return m_active && window->window == m_active->window;
    };
    QList<const XWindow *> found;
    for (const XWindow &window : m_stacked)
        if (window.pid == told.pid &&
            (told.isActive && m_active ? isActive(&window) : window.title == told.title))
            found.append(&window);
    // A program may give several windows one title, of which the one that is told to be in front is another.
    if (found.size() > 1 && !told.isActive)
        found.removeIf(isActive);
    if (found.size() > 1 && told.isGtk4)
        return nullptr; // It does not tell where they are.
    const auto distance = [&told](const XWindow *window) {
        return (window->frame.center() - told.extents.center()).manhattanLength();
    };
    const auto nearest = std::min_element(
        found.begin(), found.end(), [&](auto *one, auto *other) { return distance(one) < distance(other); });
    return nearest != found.end() ? *nearest : nullptr;
}

std::shared_ptr<const AccessibleWindow> ScreenWindows::find(const ToldWindow &told) const
{
    auto found = std::make_shared<AccessibleWindow>();
    found->pid = told.pid;
    found->tellsShowing = !told.isGtk4;
    found->isRelative = told.isGtk4;
    const XWindow *const own = meant(told);
    if (!own) {
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
