#include "browser/window/BrowserTabButton.h"

#include "browser/pages/PageText.h"
#include "browser/tabs/BrowserTab.h"
#include "browser/window/BrowserTabAccessible.h"
#include "ui/controls/HoverText.h"
#include "ui/theme/Icons.h"
#include "ui/theme/MorvaneStyle.h"
#include "ui/theme/ThemeColors.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QToolButton>
#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// In characters of the font.
constexpr int widest = 26;
constexpr int narrowest = 11;
constexpr qreal radius = 7;

} // namespace

BrowserTabButton::BrowserTabButton(const BrowserTab &tab, QWidget *parent)
    : QAbstractButton(parent), m_tab(tab), m_id(tab.id()), m_close(new QToolButton(this))
{
    BrowserTabAccessible::install();
    setCheckable(true);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setMaximumWidth(BrowserTabButton::sizeHint().width()); // nothing is virtual yet
    setAccessibleDescription(u"Switch to this tab"_s);
    m_close->setIcon(symbolIcon(Symbol::cross));
    m_close->setAutoRaise(true);
    m_close->setFocusPolicy(Qt::NoFocus);
    m_close->setAccessibleDescription(u"Closes this tab"_s);
    connect(m_close, &QToolButton::clicked, this, &BrowserTabButton::closeRequested);
    connect(&tab, &BrowserTab::changed, this, &BrowserTabButton::update);
    update();
}

void BrowserTabButton::update()
{
    const QString title = pageText(m_tab.title());
    if (accessibleName() != title) {
        setText(title);
        setHoverText(this, u"<qt>%1</qt>"_s.arg(title.toHtmlEscaped()));
        setAccessibleName(title);
        m_close->setAccessibleName(u"Close tab "_s + title);
        setHoverText(m_close, u"<qt>%1</qt>"_s.arg(m_close->accessibleName().toHtmlEscaped()));
    }
    QWidget::update();
}

void BrowserTabButton::setActive(bool active)
{
    if (isChecked() == active)
        return;
    setChecked(active);
    QAccessible::State changed;
    changed.selected = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
    QWidget::update();
}

void BrowserTabButton::setTabStop(bool stops)
{
    setFocusPolicy(stops ? Qt::TabFocus : Qt::NoFocus);
}

int BrowserTabButton::iconSide() const
{
    return std::max(16, fontMetrics().height());
}

int BrowserTabButton::padding() const
{
    return iconSide() / 2;
}

QSize BrowserTabButton::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * widest + 2 * iconSide() + 4 * padding(),
            iconSide() + 2 * padding()};
}

QSize BrowserTabButton::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * narrowest + 2 * iconSide() + 4 * padding(),
            sizeHint().height()};
}

void BrowserTabButton::placeClose()
{
    const int side = iconSide() + padding();
    m_close->setIconSize({iconSide() * 3 / 4, iconSide() * 3 / 4});
    m_close->setGeometry(width() - side - padding() / 2, (height() - side) / 2, side, side);
}

void BrowserTabButton::resizeEvent(QResizeEvent *event)
{
    QAbstractButton::resizeEvent(event);
    placeClose();
}

void BrowserTabButton::changeEvent(QEvent *event)
{
    QAbstractButton::changeEvent(event);
    if (event->type() != QEvent::FontChange)
        return;
    setMaximumWidth(sizeHint().width());
    updateGeometry();
    placeClose();
}

void BrowserTabButton::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF place = QRectF(rect()).adjusted(1, 1, -1, -1);
    if (isChecked() || underMouse()) {
        painter.setPen(isChecked() ? QPen(colors.controlBorder) : QPen(Qt::NoPen));
        painter.setBrush(isChecked() ? colors.surface : colors.hover);
        painter.drawRoundedRect(place.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    }
    const QRect icon(padding(), (height() - iconSide()) / 2, iconSide(), iconSide());
    const QImage favicon = m_tab.favicon();
    if (favicon.isNull())
        painter.drawPixmap(icon.topLeft(), symbolPixmap(Symbol::globe, iconSide(), colors.secondaryText,
                                                        devicePixelRatioF()));
    else
        painter.drawImage(icon, favicon);
    const QRect words(icon.right() + padding(), 0, m_close->x() - icon.right() - padding(), height());
    painter.setPen(isChecked() ? colors.text : colors.secondaryText);
    painter.drawText(words, Qt::AlignVCenter | Qt::AlignLeft,
                     fontMetrics().elidedText(text(), Qt::ElideRight, words.width()));
    if (hasFocus())
        MorvaneStyle::drawFocusRing(painter, place, radius, palette());
}

void BrowserTabButton::mousePressEvent(QMouseEvent *event)
{
    m_pressedAt = event->pos();
    m_press = event->button() == Qt::LeftButton     ? Press::left
              : event->button() == Qt::MiddleButton ? Press::middle
                                                    : Press::none;
    if (m_press == Press::left)
        Q_EMIT clicked();
}

void BrowserTabButton::mouseMoveEvent(QMouseEvent *event)
{
    const bool isFar = (event->pos() - m_pressedAt).manhattanLength() >= QApplication::startDragDistance();
    if (m_press == Press::left && isFar)
        m_press = Press::dragging;
    if (m_press == Press::dragging)
        Q_EMIT dragged(mapToParent(event->pos()).x());
}

void BrowserTabButton::mouseReleaseEvent(QMouseEvent *event)
{
    const bool closes = std::exchange(m_press, Press::none) == Press::middle &&
                        event->button() == Qt::MiddleButton && rect().contains(event->pos());
    if (closes)
        Q_EMIT closeRequested();
}

void BrowserTabButton::moveBy(int step, Qt::KeyboardModifiers modifiers)
{
    if (modifiers == (Qt::ControlModifier | Qt::ShiftModifier))
        Q_EMIT placeMoveRequested(step);
    else
        Q_EMIT focusMoveRequested(step);
}

void BrowserTabButton::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        return click();
    case Qt::Key_Delete:
        return closeRequested();
    case Qt::Key_Left:
        return moveBy(layoutDirection() == Qt::RightToLeft ? 1 : -1, event->modifiers());
    case Qt::Key_Right:
        return moveBy(layoutDirection() == Qt::RightToLeft ? -1 : 1, event->modifiers());
    case Qt::Key_Home:
        return focusMoveRequested(std::numeric_limits<short>::min());
    case Qt::Key_End:
        return focusMoveRequested(std::numeric_limits<short>::max());
    default:
        return event->ignore();
    }
}

} // namespace morvane
