#include "ui/window/StatusBarView.h"

#include "app/AppModel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"

#include <QPainter>

namespace morvane {

namespace {

constexpr int markPlace = 12;
constexpr int dotSize = 6;
constexpr int checkSize = 9;
constexpr int textPlace = 28;

} // namespace

StatusBarView::StatusBarView(AppModel &model, QWidget *parent) : QLabel(parent), m_model(model)
{
    setTextFormat(Qt::PlainText);
    setContentsMargins(textPlace, 5, 12, 5);
    connect(&model.status(), &Status::statusTextChanged, this, &StatusBarView::updateText);
    connect(&model, &AppModel::isBusyChanged, this, qOverload<>(&QWidget::update));
    updateText();
}

void StatusBarView::updateText()
{
    const QString &status = m_model.status().statusText();
    setText(status);
    setToolTip(status);
    setAccessibleName(QStringLiteral("Status. ") + status);
}

QSize StatusBarView::minimumSizeHint() const
{
    // A long command must not widen the window; it is cut at the edge and whole in the tool tip.
    return {0, QLabel::minimumSizeHint().height()};
}

void StatusBarView::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.border);
    painter.drawLine(0, 0, width(), 0);
    const qreal middle = height() / 2.0;
    if (m_model.isBusy()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.accent);
        painter.drawEllipse(QRectF(markPlace, middle - dotSize / 2.0, dotSize, dotSize));
    } else {
        painter.drawPixmap(QPointF(markPlace - 1, middle - checkSize / 2.0),
                           symbolPixmap(Symbol::check, checkSize, colors.secondaryText, devicePixelRatioF()));
    }
    painter.setPen(colors.secondaryText);
    const QRect place = contentsRect();
    painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text().simplified(), Qt::ElideRight, place.width()));
}

} // namespace morvane
