#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

namespace morvane {

/// How one window of a program counts its coordinates, and where it is. Toolkits differ in both.
struct AccessibleWindow {
    qint64 pid = 0;
    uint32_t id = 0; ///< As the X server calls it; 0 for a menu and the like.
    /// The program says which elements are on the screen.
    bool tellsShowing = true;
    /// Places are told from the window's inside, not from the screen.
    bool isRelative = false;
    QPointF offset;  ///< Of the window's inside, in the coordinates of the tools.
    qreal scale = 1; ///< Pixels for each of the program's units.
    QRectF frame;    ///< In the coordinates of the tools; empty if unknown.

    /// Whether it is known where its elements are.
    bool isPlaced() const { return !isRelative || id != 0; }
    /// What the program told, in the coordinates of the tools; `origin` is that of the primary monitor.
    QRectF toScreen(QRectF told, QPointF origin) const
    {
        const QRectF scaled(told.topLeft() * scale, told.size() * scale);
        return isRelative ? scaled.translated(offset) : scaled.translated(-origin);
    }
};

} // namespace morvane
