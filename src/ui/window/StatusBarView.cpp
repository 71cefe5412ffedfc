#include "ui/window/StatusBarView.h"

#include "app/AppModel.h"
#include "base/LabelText.h"
#include "ui/controls/HoverText.h"
#include "ui/controls/ReadableText.h"
#include "ui/theme/Icons.h"
#include "ui/theme/ThemeColors.h"

#include <QPainter>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int markCentre = 16;
constexpr int largestMark = 18;
constexpr int textPlace = 30;
/// Characters; more than a line holds.
constexpr qsizetype longestLine = 300;

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
    const QString status = readableText(labelText(m_model.status().statusText()));
    setText(labelText(status, longestLine));
    // As HTML, so that it wraps, and escaped, so that a command cannot bring markup of its own.
    setHoverText(this, u"<qt>%1</qt>"_s.arg(status.toHtmlEscaped()));
    setAccessibleName(u"Status. "_s + status);
}

QSize StatusBarView::sizeHint() const
{
    // A long command must not widen the window; it is cut at the edge and whole in the tool tip.
    const QMargins margins = contentsMargins();
    return {0, margins.top() + fontMetrics().height() + margins.bottom()};
}

void StatusBarView::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.border);
    painter.drawLine(0, 0, width(), 0);
    const QPointF centre(markCentre, height() / 2.0);
    const int mark = std::min(fontMetrics().height() * 5 / 8, largestMark);
    if (m_model.isBusy()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.accent);
        painter.drawEllipse(centre, mark / 3.0, mark / 3.0);
    } else {
        painter.drawPixmap(centre - QPointF(mark, mark) / 2,
                           symbolPixmap(Symbol::check, mark, colors.secondaryText, devicePixelRatioF()));
    }
    painter.setPen(colors.secondaryText);
    const QRect place = contentsRect();
    painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text().simplified(), Qt::ElideRight, place.width()));
}

} // namespace morvane
