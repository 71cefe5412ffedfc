#include "ui/conversation/SelectionGestures.h"

#include "base/LabelText.h"
#include "ui/conversation/ConversationLayout.h"
#include "ui/conversation/ConversationScroll.h"

#include <QApplication>
#include <QClipboard>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QTextBlock>
#include <QTimerEvent>
#include <QToolTip>
#include <QWidget>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

SelectionGestures::SelectionGestures(ConversationLayout &layout, ConversationScroll &scroll,
                                     QWidget &viewport)
    : m_layout(layout), m_scroll(scroll), m_viewport(viewport), m_selection(layout.content())
{
    m_viewport.setMouseTracking(true);
    m_viewport.setCursor(Qt::IBeamCursor);
    m_viewport.installEventFilter(this);
}

QPoint SelectionGestures::inContent(const QPoint &position) const
{
    return position + QPoint(0, m_scroll.offset());
}

std::optional<TextHit> SelectionGestures::hitAt(const QPoint &position) const
{
    return hitTest(m_layout, inContent(position));
}

bool SelectionGestures::eventFilter(QObject *, QEvent *event)
{
    const auto isLeft = [event] { return static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton; };
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (isLeft())
            press(*static_cast<QMouseEvent *>(event));
        return true;
    case QEvent::MouseButtonDblClick:
        if (isLeft())
            doubleClick(*static_cast<QMouseEvent *>(event));
        return true;
    case QEvent::MouseMove:
        move(*static_cast<QMouseEvent *>(event));
        return true;
    case QEvent::MouseButtonRelease:
        if (isLeft())
            release();
        return true;
    case QEvent::ToolTip:
        showToolTip(*static_cast<QHelpEvent *>(event));
        return true;
    default:
        return false;
    }
}

void SelectionGestures::showToolTip(const QHelpEvent &event) const
{
    QString text;
    if (const auto hit = hitAt(event.pos()))
        text = labelText(hit->link.isEmpty() ? m_layout.content().whole(hit->place.item) : hit->link);
    // As HTML, so that it wraps, and escaped, so that no text brings markup of its own.
    if (!text.isEmpty())
        text = u"<qt>%1</qt>"_s.arg(text.toHtmlEscaped());
    QToolTip::showText(event.globalPos(), text, &m_viewport);
}

void SelectionGestures::clear()
{
    m_selection.clear();
    Q_EMIT selectionChanged();
}

void SelectionGestures::select(const TextPlace &from, const TextPlace &to)
{
    m_selection.start(from);
    m_selection.extendTo(to);
    Q_EMIT selectionChanged();
}

void SelectionGestures::selectRows(const ConversationItem &from, const ConversationItem &to)
{
    const ConversationContent &content = m_layout.content();
    if (content.position(from) <= content.position(to))
        select({.item = from, .position = {}}, {.item = to, .position = TextPosition::rowEnd()});
    else
        select({.item = from, .position = TextPosition::rowEnd()}, {.item = to, .position = {}});
}

void SelectionGestures::press(const QMouseEvent &event)
{
    const QPoint position = event.position().toPoint();
    const auto hit = hitAt(position);
    if (!hit)
        return;
    m_pressedAt = position;
    m_pressedLink = hit->link;
    const ConversationItem item = hit->place.item;
    m_pressedHeader = item.kind == ConversationItem::Kind::activityHeader;
    m_isDragging = true;
    if (m_tripleClickTimer.isActive()) {
        m_tripleClickTimer.stop();
        selectAround(hit->place, QTextCursor::BlockUnderCursor);
    } else if (event.modifiers().testFlag(Qt::ShiftModifier) && m_selection.anchor()) {
        m_selection.extendTo(hit->place);
        Q_EMIT selectionChanged();
    } else {
        select(hit->place, hit->place);
    }
    Q_EMIT rowPressed(item);
}

void SelectionGestures::selectAround(const TextPlace &place, QTextCursor::SelectionType unit)
{
    QTextCursor cursor(&m_layout.document(place.item, place.position.segment));
    cursor.setPosition(place.position.position);
    cursor.select(unit);
    // A selected block brings the mark that ends the one above.
    const int start =
        unit == QTextCursor::BlockUnderCursor ? cursor.block().position() : cursor.selectionStart();
    TextPlace from = place;
    from.position.position = start;
    TextPlace to = place;
    to.position.position = cursor.selectionEnd();
    select(from, to);
}

void SelectionGestures::doubleClick(const QMouseEvent &event)
{
    const auto hit = hitAt(event.position().toPoint());
    if (!hit)
        return;
    selectAround(hit->place, QTextCursor::WordUnderCursor);
    m_tripleClickTimer.start(QApplication::doubleClickInterval(), this);
}

void SelectionGestures::move(const QMouseEvent &event)
{
    constexpr int scrollInterval = 30;
    const QPoint position = event.position().toPoint();
    if (!m_isDragging || !event.buttons().testFlag(Qt::LeftButton)) {
        const auto hit = hitAt(position);
        const bool canBePressed =
            hit && (!hit->link.isEmpty() || hit->place.item.kind == ConversationItem::Kind::activityHeader);
        m_viewport.setCursor(canBePressed ? Qt::PointingHandCursor : Qt::IBeamCursor);
        return;
    }
    if ((position - m_pressedAt).manhattanLength() >= QApplication::startDragDistance()) {
        m_pressedLink.clear();
        m_pressedHeader = false;
    }
    m_draggedTo = position;
    followDrag();
    if (m_viewport.rect().contains(position))
        m_dragTimer.stop();
    else if (!m_dragTimer.isActive())
        m_dragTimer.start(scrollInterval, this);
}

void SelectionGestures::followDrag()
{
    const QPoint inside(m_draggedTo.x(), qBound(0, m_draggedTo.y(), m_viewport.height() - 1));
    if (const auto hit = hitAt(inside)) {
        m_selection.extendTo(hit->place);
        Q_EMIT selectionChanged();
    }
}

void SelectionGestures::release()
{
    m_dragTimer.stop();
    if (!std::exchange(m_isDragging, false))
        return;
    if (std::exchange(m_pressedHeader, false))
        Q_EMIT headerPressed();
    else if (!m_pressedLink.isEmpty())
        Q_EMIT linkPressed(std::exchange(m_pressedLink, QString()));
    else if (!m_selection.isEmpty() && QGuiApplication::clipboard()->supportsSelection())
        m_primary.copy(m_selection.rows(m_layout));
}

void SelectionGestures::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_tripleClickTimer.timerId()) {
        m_tripleClickTimer.stop();
    } else if (event->timerId() == m_dragTimer.timerId()) {
        const int y = m_draggedTo.y();
        m_scroll.scrollBy(y < 0 ? y : qMax(0, y - m_viewport.height()));
        followDrag();
    }
}

} // namespace morvane
