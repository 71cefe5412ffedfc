#include "ui/theme/FieldPainting.h"

#include "ui/theme/Contrast.h"
#include "ui/theme/Icons.h"
#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QStyleOption>
#include <algorithm>

namespace morvane {

namespace {

constexpr qreal cornerRadius = 7;
constexpr int textPadding = 10;
constexpr int grooveHeight = 4;

int arrowSide(const QFontMetrics &metrics)
{
    return std::max(14, metrics.height() * 3 / 4);
}

void drawChevron(QPainter &painter, const QRect &place, const QStyleOption &option, bool up, bool enabled)
{
    const int side = std::min(arrowSide(option.fontMetrics), place.height());
    const QColor ink =
        option.palette.color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::ButtonText);
    const QPixmap chevron =
        symbolPixmap(Symbol::chevronDown, side, ink, painter.device()->devicePixelRatioF());
    painter.save();
    painter.translate(QRectF(place).center());
    if (up)
        painter.rotate(180);
    painter.drawPixmap(QPointF(-side / 2.0, -side / 2.0), chevron);
    painter.restore();
}

} // namespace

void drawFieldFrame(QPainter &painter, const QRect &rect, const QPalette &palette, QStyle::State state)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(state.testFlag(QStyle::State_Enabled) ? colors.controlBorder : colors.border);
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    painter.restore();
    if (state.testFlag(QStyle::State_HasFocus))
        MorvaneStyle::drawFocusRing(painter, rect, cornerRadius, palette);
}

void drawComboBox(QPainter &painter, const QStyleOptionComboBox &option)
{
    drawFieldFrame(painter, option.rect, option.palette, option.state);
    drawChevron(painter, comboBoxPart(option, QStyle::SC_ComboBoxArrow), option, false,
                option.state.testFlag(QStyle::State_Enabled));
}

QRect comboBoxPart(const QStyleOptionComboBox &option, QStyle::SubControl part)
{
    const int arrow = arrowSide(option.fontMetrics) + textPadding;
    QRect rect = option.rect;
    if (part == QStyle::SC_ComboBoxArrow)
        rect.setLeft(rect.right() - arrow + 1);
    else if (part == QStyle::SC_ComboBoxEditField)
        rect.adjust(textPadding, 1, -arrow, -1);
    return QStyle::visualRect(option.direction, option.rect, rect);
}

QRect spinBoxPart(const QStyleOptionSpinBox &option, QStyle::SubControl part)
{
    const int width = arrowSide(option.fontMetrics) + textPadding;
    QRect rect = option.rect;
    const int middle = rect.center().y();
    if (part == QStyle::SC_SpinBoxUp)
        rect = QRect(QPoint(rect.right() - width, rect.top() + 1), QPoint(rect.right() - 1, middle));
    else if (part == QStyle::SC_SpinBoxDown)
        rect = QRect(QPoint(rect.right() - width, middle + 1), QPoint(rect.right() - 1, rect.bottom() - 1));
    else if (part == QStyle::SC_SpinBoxEditField)
        rect.adjust(2, 2, -width - 2, -2);
    return QStyle::visualRect(option.direction, option.rect, rect);
}

void drawSpinBox(QPainter &painter, const QStyleOptionSpinBox &option)
{
    drawFieldFrame(painter, option.rect, option.palette, option.state);
    const ThemeColors colors = ThemeColors::fromPalette(option.palette);
    for (const auto part : {QStyle::SC_SpinBoxUp, QStyle::SC_SpinBoxDown}) {
        const QRect place = spinBoxPart(option, part);
        const bool up = part == QStyle::SC_SpinBoxUp;
        const bool enabled = option.state.testFlag(QStyle::State_Enabled) &&
                             option.stepEnabled.testFlag(up ? QAbstractSpinBox::StepUpEnabled
                                                            : QAbstractSpinBox::StepDownEnabled);
        const bool active = enabled && option.activeSubControls.testFlag(part) &&
                            (option.state & (QStyle::State_Sunken | QStyle::State_MouseOver));
        if (active) {
            painter.save();
            painter.setRenderHint(QPainter::Antialiasing);
            painter.setPen(Qt::NoPen);
            painter.setBrush(blended(colors.surface, colors.text,
                                     option.state.testFlag(QStyle::State_Sunken) ? 0.2 : 0.1));
            painter.drawRoundedRect(QRectF(place).adjusted(1, 1, -1, -1), 4, 4);
            painter.restore();
        }
        drawChevron(painter, place, option, up, enabled);
    }
}

int sliderHandleSide(const QFontMetrics &metrics)
{
    return std::max(18, metrics.height());
}

void drawSlider(QPainter &painter, const QStyleOptionSlider &option, const QRect &handle)
{
    const ThemeColors colors = ThemeColors::fromPalette(option.palette);
    const bool enabled = option.state.testFlag(QStyle::State_Enabled);
    const bool active = enabled && (option.state & (QStyle::State_Sunken | QStyle::State_MouseOver));
    const qreal top = option.rect.center().y() + 0.5 - grooveHeight / 2.0;
    const QRectF groove(option.rect.left() + 2, top, option.rect.width() - 4, grooveHeight);
    QRectF filled = groove;
    if (option.upsideDown)
        filled.setLeft(handle.center().x());
    else
        filled.setRight(handle.center().x());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.controlBorder);
    painter.drawRoundedRect(groove, grooveHeight / 2.0, grooveHeight / 2.0);
    painter.setBrush(enabled ? colors.accent : colors.border);
    painter.drawRoundedRect(filled, grooveHeight / 2.0, grooveHeight / 2.0);
    painter.setPen(QPen(enabled ? colors.accent : colors.border, 2));
    painter.setBrush(active ? blended(colors.surface, colors.accent, 0.25) : colors.surface);
    painter.drawEllipse(QRectF(handle).adjusted(2, 2, -2, -2));
    painter.restore();
    if (option.state.testFlag(QStyle::State_HasFocus))
        MorvaneStyle::drawFocusRing(painter, option.rect, cornerRadius, option.palette);
}

} // namespace morvane
