#pragma once

#include <QPainter>
#include <QRectF>

namespace morvane {

/// Draws the program's mark, a play triangle in a rounded figure, into `square`. It is decoration, so views
/// paint it instead of adding a widget that assistive technology would find.
void paintAppMark(QPainter &painter, const QRectF &square);

} // namespace morvane
