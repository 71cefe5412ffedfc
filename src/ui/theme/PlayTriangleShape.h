#pragma once

#include <QPainterPath>
#include <QRectF>

namespace morvane {

/// A triangle that points right and fills `rect`, with softly rounded corners.
QPainterPath playTriangleShape(const QRectF &rect);

} // namespace morvane
