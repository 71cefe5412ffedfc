#include "ui/conversation/SelectionGestures.h"

#include "ui/controls/LabelText.h"
#include "ui/conversation/ConversationLayout.h"
#include "ui/conversation/ConversationScroll.h"

#include <QApplication>
#include <QClipboard>
#include <QCursor>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimerEvent>
#include <QToolTip>
#include <QWidget>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

SelectionGestures::SelectionGestures(ConversationLayout &layout, ConversationScroll &scroll,
                                     QWidget &viewport)
    : m_layout(layout), m_scroll(scroll), m_viewport(viewport)
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
        text = labelText(hit->link.isEmpty() ? m_layout.content().whole(hit->item) : hit->link);
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

void SelectionGestures::select(const ConversationItem &item, const TextPosition &from, const TextPosition &to)
{
    m_selection.start(item, from);
    m_selection.extendTo(to);
    Q_EMIT selectionChanged();
}

void SelectionGestures::selectRow(const ConversationItem &item)
{
    select(item, {},
           {.segment = m_layout.row(item).segments.size() - 1, .position = std::numeric_limits<int>::max()});
}

void SelectionGestures::press(const QMouseEvent &event)
{
    const QPoint position = event.position().toPoint();
    const auto hit = hitAt(position);
    if (!hit)
        return;
    m_pressedAt = position;
    m_pressedLink = hit->link;
    m_pressedHeader = hit->item.kind == ConversationItem::Kind::activityHeader;
    m_isDragging = true;
    const qsizetype segment = hit->position.segment;
    if (m_tripleClickTimer.isActive()) {
        m_tripleClickTimer.stop();
        QTextCursor cursor(&m_layout.document(hit->item, segment));
        cursor.setPosition(hit->position.position);
        cursor.select(QTextCursor::BlockUnderCursor);
        select(hit->item, {.segment = segment, .position = cursor.block().position()},
               {.segment = segment, .position = cursor.selectionEnd()});
    } else if (event.modifiers().testFlag(Qt::ShiftModifier) && m_selection.item() == hit->item) {
        m_selection.extendTo(hit->position);
        Q_EMIT selectionChanged();
    } else {
        select(hit->item, hit->position, hit->position);
    }
    Q_EMIT rowPressed(hit->item);
}

void SelectionGestures::doubleClick(const QMouseEvent &event)
{
    const auto hit = hitAt(event.position().toPoint());
    if (!hit)
        return;
    const qsizetype segment = hit->position.segment;
    QTextCursor cursor(&m_layout.document(hit->item, segment));
    cursor.setPosition(hit->position.position);
    cursor.select(QTextCursor::WordUnderCursor);
    select(hit->item, {.segment = segment, .position = cursor.selectionStart()},
           {.segment = segment, .position = cursor.selectionEnd()});
    m_tripleClickTimer.start(QApplication::doubleClickInterval(), this);
}

void SelectionGestures::move(const QMouseEvent &event)
{
    constexpr int scrollInterval = 30;
    const QPoint position = event.position().toPoint();
    if (!m_isDragging || !event.buttons().testFlag(Qt::LeftButton)) {
        const auto hit = hitAt(position);
        const bool canBePressed =
            hit && (!hit->link.isEmpty() || hit->item.kind == ConversationItem::Kind::activityHeader);
        m_viewport.setCursor(canBePressed ? Qt::PointingHandCursor : Qt::IBeamCursor);
        return;
    }
    if ((position - m_pressedAt).manhattanLength() >= QApplication::startDragDistance()) {
        m_pressedLink.clear();
        m_pressedHeader = false;
    }
    dragTo(position);
    if (m_viewport.rect().contains(position))
        m_dragTimer.stop();
    else if (!m_dragTimer.isActive())
        m_dragTimer.start(scrollInterval, this);
}

void SelectionGestures::dragTo(const QPoint &position)
{
    if (!m_selection.item())
        return;
    const QPoint inside(position.x(), qBound(0, position.y(), m_viewport.height() - 1));
    if (const auto hit = hitTest(m_layout, inContent(inside), m_selection.item())) {
        m_selection.extendTo(hit->position);
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
        QGuiApplication::clipboard()->setText(selectedText(), QClipboard::Selection);
}

void SelectionGestures::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_tripleClickTimer.timerId()) {
        m_tripleClickTimer.stop();
    } else if (event->timerId() == m_dragTimer.timerId()) {
        const QPoint position = m_viewport.mapFromGlobal(QCursor::pos());
        m_scroll.scrollBy(position.y() < 0 ? position.y() : position.y() - m_viewport.height());
        dragTo(position);
    }
}

} // namespace morvane
