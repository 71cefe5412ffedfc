#include "ui/theme/MorvaneStyle.h"

#include "ui/theme/Contrast.h"
#include "ui/theme/FieldPainting.h"
#include "ui/theme/ThemeColors.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QPainter>
#include <QPushButton>
#include <QSlider>
#include <QStyleFactory>
#include <QStyleOption>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qreal cornerRadius = 7;
constexpr int scrollBarExtent = 12;
constexpr int minimumScrollHandle = 32;

/// Deriving the colours takes some thirty contrast computations, too many for each painted button.
const ThemeColors &colorsOf(const QPalette &palette)
{
    thread_local qint64 key = 0;
    thread_local ThemeColors colors;
    if (key != palette.cacheKey()) {
        key = palette.cacheKey();
        colors = ThemeColors::fromPalette(palette);
    }
    return colors;
}

void drawRounded(QPainter &painter, const QRectF &rect, const QColor &fill, const QColor &border)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(border.isValid() ? QPen(border, 1) : QPen(Qt::NoPen));
    painter.setBrush(fill.isValid() ? QBrush(fill) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(rect.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
    painter.restore();
}

bool isPlainSlider(QStyle::ComplexControl control, const QStyleOptionSlider &option)
{
    return control == QStyle::CC_Slider && option.orientation == Qt::Horizontal &&
           option.tickPosition == QSlider::NoTicks;
}

} // namespace

MorvaneStyle::MorvaneStyle() : QProxyStyle(QStyleFactory::create(u"fusion"_s)) {}

void MorvaneStyle::drawFocusRing(QPainter &painter, const QRectF &rect, qreal radius, const QPalette &palette)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colorsOf(palette).focusRing, 2));
    painter.drawRoundedRect(rect.adjusted(1, 1, -1, -1), radius, radius);
    painter.restore();
}

void MorvaneStyle::drawFocusRingOnAccent(QPainter &painter, const QRectF &rect, qreal radius,
                                         const QPalette &palette)
{
    drawFocusRing(painter, rect, radius, palette);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colorsOf(palette).onAccent, 2));
    painter.drawRoundedRect(rect.adjusted(3, 3, -3, -3), radius - 2, radius - 2);
    painter.restore();
}

void MorvaneStyle::drawButton(const QStyleOption &option, QPainter &painter) const
{
    const ThemeColors &colors = colorsOf(option.palette);
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(&option);
    const bool isEnabled = option.state.testFlag(State_Enabled);
    const bool isPressed = option.state.testFlag(State_Sunken) || option.state.testFlag(State_On);
    const bool isHovered = isEnabled && option.state.testFlag(State_MouseOver);
    const bool isDefault =
        isEnabled && button != nullptr && button->features.testFlag(QStyleOptionButton::DefaultButton);

    if (isDefault) {
        const double shift = isPressed ? 0.2 : isHovered ? 0.1 : 0;
        drawRounded(painter, option.rect, blended(colors.accent, colors.text, shift), QColor());
    } else {
        QColor fill = option.palette.color(QPalette::Button);
        fill = blended(fill, colors.text, isPressed ? 0.14 : isHovered ? 0.07 : 0);
        drawRounded(painter, option.rect, fill, isEnabled ? colors.controlBorder : colors.border);
    }
}

void MorvaneStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                                 const QWidget *widget) const
{
    switch (element) {
    case PE_PanelButtonCommand:
        drawButton(*option, *painter);
        return;
    case PE_PanelButtonTool: {
        const bool isPressed = option->state.testFlag(State_Sunken) || option->state.testFlag(State_On);
        const bool isHovered =
            option->state.testFlag(State_MouseOver) && option->state.testFlag(State_Enabled);
        if (isPressed || isHovered) {
            const ThemeColors &colors = colorsOf(option->palette);
            drawRounded(*painter, option->rect, blended(colors.window, colors.text, isPressed ? 0.16 : 0.08),
                        QColor());
        }
        return;
    }
    case PE_FrameFocusRect:
        if (const auto *button = qobject_cast<const QPushButton *>(widget);
            button != nullptr && button->isDefault())
            drawFocusRingOnAccent(*painter, option->rect, cornerRadius, option->palette);
        else
            drawFocusRing(*painter, option->rect, cornerRadius, option->palette);
        return;
    case PE_PanelLineEdit:
    case PE_FrameLineEdit:
        // The field within a spin box stands in the frame of that.
        if (widget == nullptr || qobject_cast<const QAbstractSpinBox *>(widget->parentWidget()) == nullptr)
            drawFieldFrame(*painter, option->rect, option->palette, option->state);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void MorvaneStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                               const QWidget *widget) const
{
    if (element == CE_PushButtonLabel) {
        if (const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
            button != nullptr && button->features.testFlag(QStyleOptionButton::DefaultButton) &&
            button->state.testFlag(State_Enabled)) {
            QStyleOptionButton copy = *button;
            copy.palette.setColor(QPalette::ButtonText, colorsOf(option->palette).onAccent);
            QProxyStyle::drawControl(element, &copy, painter, widget);
            return;
        }
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void MorvaneStyle::drawScrollBar(const QStyleOptionComplex &option, QPainter &painter,
                                 const QWidget *widget) const
{
    const ThemeColors &colors = colorsOf(option.palette);
    QRectF handle = subControlRect(CC_ScrollBar, &option, SC_ScrollBarSlider, widget);
    const auto *slider = qstyleoption_cast<const QStyleOptionSlider *>(&option);
    if (slider == nullptr || slider->maximum <= slider->minimum)
        return;
    const bool isActive = option.state.testFlag(State_MouseOver) || option.state.testFlag(State_Sunken);
    const qreal inset = isActive ? 2 : 3;
    if (slider->orientation == Qt::Vertical)
        handle.adjust(inset, 1, -inset, -1);
    else
        handle.adjust(1, inset, -1, -inset);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isActive ? colors.secondaryText : colors.controlBorder);
    const qreal radius = qMin(handle.width(), handle.height()) / 2;
    painter.drawRoundedRect(handle, radius, radius);
    painter.restore();
}

void MorvaneStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                      QPainter *painter, const QWidget *widget) const
{
    if (control == CC_ScrollBar) {
        drawScrollBar(*option, *painter, widget);
        return;
    }
    if (const auto *box = qstyleoption_cast<const QStyleOptionComboBox *>(option);
        box != nullptr && control == CC_ComboBox && !box->editable) {
        drawComboBox(*painter, *box);
        return;
    }
    if (const auto *box = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
        box != nullptr && control == CC_SpinBox) {
        drawSpinBox(*painter, *box);
        return;
    }
    if (const auto *button = qstyleoption_cast<const QStyleOptionToolButton *>(option);
        button != nullptr && control == CC_ToolButton && button->state.testFlag(State_HasFocus)) {
        // Around the button; the toolkit would draw it through the symbol.
        QStyleOptionToolButton unfocused = *button;
        unfocused.state.setFlag(State_HasFocus, false);
        QProxyStyle::drawComplexControl(control, &unfocused, painter, widget);
        drawFocusRing(*painter, button->rect, cornerRadius, button->palette);
        return;
    }
    if (const auto *slider = qstyleoption_cast<const QStyleOptionSlider *>(option);
        slider != nullptr && isPlainSlider(control, *slider)) {
        drawSlider(*painter, *slider, subControlRect(control, option, SC_SliderHandle, widget));
        return;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect MorvaneStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                                   const QWidget *widget) const
{
    if (const auto *box = qstyleoption_cast<const QStyleOptionComboBox *>(option);
        box != nullptr && control == CC_ComboBox && part != SC_ComboBoxListBoxPopup)
        return comboBoxPart(*box, part);
    if (const auto *box = qstyleoption_cast<const QStyleOptionSpinBox *>(option);
        box != nullptr && control == CC_SpinBox)
        return spinBoxPart(*box, part);
    return QProxyStyle::subControlRect(control, option, part, widget);
}

QRect MorvaneStyle::subElementRect(SubElement element, const QStyleOption *option,
                                   const QWidget *widget) const
{
    if (element == SE_PushButtonFocusRect)
        return option->rect;
    if (element == SE_LineEditContents)
        return QProxyStyle::subElementRect(element, option, widget).adjusted(4, 0, -4, 0);
    return QProxyStyle::subElementRect(element, option, widget);
}

QSize MorvaneStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                                     const QWidget *widget) const
{
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    if (type == CT_PushButton) {
        result = QSize(qMax(result.width(), size.width() + 28), qMax(result.height(), size.height() + 14));
    } else if (type == CT_LineEdit) {
        result += QSize(8, 8);
    } else if (type == CT_ComboBox) {
        // As high as a text field.
        const QFontMetrics &metrics = option->fontMetrics;
        result = QSize(result.width() + metrics.height() + 8, qMax(size.height(), metrics.height()) + 14);
    } else if (type == CT_SpinBox) {
        result = QSize(result.width() + option->fontMetrics.height() + 8, size.height());
    } else if (type == CT_Slider) {
        result.setHeight(qMax(result.height(), sliderHandleSide(option->fontMetrics) + 4));
    }
    return result;
}

int MorvaneStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return scrollBarExtent;
    case PM_ScrollBarSliderMin:
        return minimumScrollHandle;
    case PM_ButtonIconSize:
    case PM_TabBarIconSize:
        // Symbols are read like the text beside them and grow with it.
        return (widget ? widget->fontMetrics() : QFontMetrics(QApplication::font())).height() * 9 / 8;
    case PM_SliderLength:
    case PM_SliderThickness:
    case PM_SliderControlThickness:
        if (option != nullptr)
            return sliderHandleSide(option->fontMetrics);
        return QProxyStyle::pixelMetric(metric, option, widget);
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int MorvaneStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                            QStyleHintReturn *result) const
{
    // A list below the box, which scrolls, instead of a menu over it, as high as the screen.
    if (hint == SH_ComboBox_Popup)
        return 0;
    // Those of the toolkit belong to another look.
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons)
        return 0;
    return QProxyStyle::styleHint(hint, option, widget, result);
}

} // namespace morvane
