#include "ui/sheets/SheetCard.h"

#include "ui/controls/AccessibleRole.h"
#include "ui/sheets/ScrollingText.h"
#include "ui/theme/ThemeColors.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

namespace morvane {

namespace {

constexpr int widestPadding = 22;
constexpr int spacing = 14;
constexpr int buttonSpacing = 10;
constexpr int charactersAcross = 84;
constexpr qreal radius = 12;

/// Takes buttons out of a layout or puts them last into it, if that is the layout of their new place.
void moveButtons(QWidget &buttons, QLayout &home, QWidget *place)
{
    const QPointer<QWidget> focused = buttons.window()->focusWidget();
    home.removeWidget(&buttons);
    buttons.setParent(place);
    if (place == home.parentWidget())
        home.addWidget(&buttons);
    buttons.show();
    if (focused && buttons.isAncestorOf(focused))
        focused->setFocus(Qt::OtherFocusReason);
}

int heightOf(const QLayout &layout, int width)
{
    return layout.hasHeightForWidth() ? layout.totalHeightForWidth(width) : layout.totalSizeHint().height();
}

} // namespace

SheetCard::SheetCard(QWidget *parent)
    : QFrame(parent), m_scroll(new QScrollArea(this)), m_content(new QWidget), m_buttonRow(new QWidget(this)),
      m_contentLayout(new QVBoxLayout(m_content)), m_buttonLayout(new QHBoxLayout(m_buttonRow))
{
    setAccessibleModalDialog(this);
    m_contentLayout->setContentsMargins(0, 0, 0, 0);
    m_contentLayout->setSpacing(spacing);
    m_buttonLayout->setContentsMargins(0, 0, 0, 0);
    m_buttonLayout->setSpacing(buttonSpacing);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    m_scroll->setWidget(m_content);
    m_scroll->viewport()->setAutoFillBackground(false);
    m_content->setAutoFillBackground(false);
}

void SheetCard::fitInto(const QSize &room)
{
    const int padding = std::min({widestPadding, room.width() / 16, room.height() / 16});
    const int width =
        std::min(room.width(), charactersAcross * fontMetrics().averageCharWidth() + 2 * padding);
    const int inner = std::max(1, width - 2 * padding);
    m_buttonLayout->setDirection(leastButtonWidth() > inner ? QBoxLayout::TopToBottom
                                                            : QBoxLayout::LeftToRight);
    const int buttons = heightOf(*m_buttonLayout, inner);
    const int wholeRoom = room.height() - 2 * padding;
    const bool buttonsScroll = wholeRoom - spacing - buttons < buttons;
    placeButtons(buttonsScroll ? m_content : this);
    int below = buttonsScroll ? 0 : spacing + buttons;

    const auto wanted = [this, inner] { return m_contentLayout->totalHeightForWidth(inner); };
    const int held = holdButtons(inner, wholeRoom - below);
    below += held > 0 ? spacing + held : 0;
    const int bodyRoom = std::max(1, wholeRoom - below);
    if (m_yielding) {
        const int natural = m_yielding->naturalHeight(inner);
        const int excess = wanted() - m_yielding->heightForWidth(inner) + natural - bodyRoom;
        const int limited = std::max(m_yielding->leastHeight(inner), natural - excess);
        m_yielding->setHeightLimit(excess > 0 ? limited : -1);
    }
    const bool isWide = m_contentLayout->totalMinimumSize().width() > inner;
    const int whole = wanted() + (isWide ? m_scroll->horizontalScrollBar()->sizeHint().height() : 0);
    const int body = std::min(whole, bodyRoom);

    resize(width, body + below + 2 * padding);
    // The scroll bar lies in the padding, so that the content keeps its width when it comes.
    const int outside = std::min(padding, m_scroll->verticalScrollBar()->sizeHint().width() + 2);
    const bool scrolls = whole > body;
    m_scroll->setGeometry(padding, padding, inner + (scrolls ? outside : 0), body);
    if (held > 0)
        m_held->setGeometry(padding, padding + body + spacing, inner, held);
    if (!buttonsScroll)
        m_buttonRow->setGeometry(padding, padding + body + below - buttons, inner, buttons);
}

void SheetCard::scrollTo(QWidget *part)
{
    m_contentLayout->activate();
    m_scroll->ensureWidgetVisible(part, 0, 0);
}

int SheetCard::leastButtonWidth() const
{
    int width = 0;
    for (int i = 0; i < m_buttonLayout->count(); ++i)
        if (m_buttonLayout->itemAt(i)->widget())
            width += m_buttonLayout->itemAt(i)->minimumSize().width() + buttonSpacing;
    return width - buttonSpacing;
}

void SheetCard::placeButtons(QWidget *place)
{
    if (m_buttonRow->parentWidget() == place)
        return;
    moveButtons(*m_buttonRow, *m_contentLayout, place);
}

void SheetCard::setHeldButtons(QWidget *buttons)
{
    m_held = buttons;
    m_heldHome = qobject_cast<QBoxLayout *>(buttons->parentWidget()->layout());
    Q_ASSERT(m_heldHome);
}

int SheetCard::holdButtons(int width, int room)
{
    if (!m_held || m_held->isHidden())
        return 0;
    const QMargins margins = m_heldHome->contentsMargins();
    int content = m_contentLayout->totalHeightForWidth(width);
    if (m_held->parentWidget() == this)
        content +=
            m_heldHome->spacing() + heightOf(*m_held->layout(), width - margins.left() - margins.right());
    const bool scrolls = content > room;
    placeHeldButtons(scrolls ? this : m_heldHome->parentWidget());
    return scrolls ? heightOf(*m_held->layout(), width) : 0;
}

void SheetCard::placeHeldButtons(QWidget *place)
{
    if (m_held->parentWidget() == place)
        return;
    moveButtons(*m_held, *m_heldHome, place);
    // The layouts around it are to know at once.
    m_heldHome->parentWidget()->updateGeometry();
}

void SheetCard::bringIntoSight(QWidget *part)
{
    if (m_content->isAncestorOf(part))
        m_scroll->ensureWidgetVisible(part);
}

void SheetCard::scrollPages(int pages)
{
    QScrollBar *bar = m_scroll->verticalScrollBar();
    bar->setValue(bar->value() + pages * bar->pageStep());
}

void SheetCard::scrollToStart()
{
    m_scroll->verticalScrollBar()->setValue(0);
}

void SheetCard::paintEvent(QPaintEvent *)
{
    const ThemeColors colors = ThemeColors::fromPalette(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors.border);
    painter.setBrush(colors.window);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}

} // namespace morvane
