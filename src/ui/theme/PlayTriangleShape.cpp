#include "ui/theme/PlayTriangleShape.h"

#include <array>

namespace morvane {

QPainterPath playTriangleShape(const QRectF &rect)
{
    const std::array corners{rect.topLeft(), QPointF(rect.right(), rect.center().y()), rect.bottomLeft()};
    constexpr qreal rounding = 0.16;

    QPainterPath path;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const QPointF corner = corners[i];
        const QPointF before = corners[(i + corners.size() - 1) % corners.size()];
        const QPointF after = corners[(i + 1) % corners.size()];
        const QPointF start = corner + (before - corner) * rounding;
        if (i == 0)
            path.moveTo(start);
        else
            path.lineTo(start);
        path.quadTo(corner, corner + (after - corner) * rounding);
    }
    path.closeSubpath();
    return path;
}

} // namespace morvane
