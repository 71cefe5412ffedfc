#pragma once

#include <QIcon>
#include <QPainter>
#include <QRectF>

namespace morvane {

/// Draws the program's mark, a play triangle in a rounded figure, into `square`. It is decoration, so views
/// paint it instead of adding a widget that assistive technology would find.
void paintAppMark(QPainter &painter, const QRectF &square);

/// The mark as the program's icon, in the sizes that desktops ask for.
QIcon appIcon();

} // namespace morvane
