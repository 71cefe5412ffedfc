#include "ui/theme/AppMark.h"

#include "ui/theme/PlayTriangleShape.h"

#include <QLinearGradient>

namespace morvane {

void paintAppMark(QPainter &painter, const QRectF &square)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QLinearGradient ground(square.topLeft(), square.bottomRight());
    ground.setColorAt(0, QColor(0x7a, 0x80, 0xff));
    ground.setColorAt(1, QColor(0x3f, 0x43, 0xb8));
    painter.setBrush(ground);
    const qreal radius = square.width() * 0.27;
    painter.drawRoundedRect(square, radius, radius);

    const qreal inset = square.width() * 0.29;
    painter.setBrush(Qt::white);
    painter.drawPath(playTriangleShape(square.adjusted(inset * 1.12, inset, -inset * 0.88, -inset)));
    painter.restore();
}

QIcon appIcon()
{
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64, 128}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paintAppMark(painter, pixmap.rect());
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace morvane
