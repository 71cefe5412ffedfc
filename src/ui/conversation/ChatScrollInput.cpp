#include "ui/conversation/ChatScrollView.h"

#include "ui/controls/LabelText.h"
#include "ui/markdown/MarkdownParser.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTimerEvent>
#include <QToolTip>
#include <QUrl>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int dragScrollInterval = 30;

} // namespace

void ChatScrollView::setCurrentRow(qsizetype row)
{
    if (row < 0 || row >= m_content.count())
        return;
    const ConversationItem item = m_content.item(row);
    m_current = item;
    showRow(item);
    prepareToTell();
    Q_EMIT currentRowChanged(row);
}

void ChatScrollView::showRow(const ConversationItem &item)
{
    const int viewHeight = viewport()->height();
    const qsizetype row = m_content.position(item);
    // The row's height is known only once it was laid out, which needs it in sight: twice is enough.
    for (int round = 0; round < 2; ++round) {
        const int top = m_layout.top(row);
        const int bottom = top + m_layout.rowHeight(item);
        const bool fits = bottom - top <= viewHeight;
        if (top >= m_offset && bottom <= m_offset + viewHeight)
            break;
        const bool entersFromAbove = top < m_offset;
        const int offset = !fits || entersFromAbove ? top : bottom - viewHeight;
        m_scrolling.stop();
        m_anchor = {.item = item, .screenY = top - offset};
        relayout(Keep::anchor);
    }
    m_tracker.updateNearBottom(m_layout.height(), {.offset = static_cast<double>(m_offset),
                                                   .viewportHeight = static_cast<double>(viewHeight)});
    setOffset(m_offset);
}

void ChatScrollView::movePage(int direction)
{
    const int step =
        qMax(m_layout.style().lineHeight, viewport()->height() - 2 * m_layout.style().lineHeight);
    verticalScrollBar()->setValue(m_offset + direction * step);
    // The first row that begins in sight; within a row taller than the page, that row.
    qsizetype row = m_layout.rowAt(m_offset);
    const bool beginsAbove = m_layout.top(row) < m_offset;
    if (beginsAbove && row + 1 < m_content.count() &&
        m_layout.top(row + 1) < m_offset + viewport()->height() / 2) {
        ++row;
    }
    m_current = m_content.item(row);
    setOffset(m_offset);
    prepareToTell();
    Q_EMIT currentRowChanged(row);
}

void ChatScrollView::keyPressEvent(QKeyEvent *event)
{
    const qsizetype count = m_content.count();
    if (count == 0) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    if (event->matches(QKeySequence::Copy)) {
        copy();
        return;
    }
    if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
        return;
    }
    m_showsFocus = true;
    const qsizetype row = currentRow();
    const bool scrollsOnly = event->modifiers().testFlag(Qt::ControlModifier);
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const int direction = event->key() == Qt::Key_Up ? -1 : 1;
        if (scrollsOnly)
            verticalScrollBar()->setValue(m_offset + direction * verticalScrollBar()->singleStep());
        else
            setCurrentRow(row < 0 ? count - 1 : qBound<qsizetype>(0, row + direction, count - 1));
        return;
    }
    case Qt::Key_Home:
        setCurrentRow(0);
        return;
    case Qt::Key_End:
        setCurrentRow(count - 1);
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
        return;
    case Qt::Key_PageUp:
        movePage(-1);
        return;
    case Qt::Key_PageDown:
        movePage(1);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (row >= 0 && !event->isAutoRepeat() && m_current->kind == ConversationItem::Kind::activityHeader) {
            setActivityFolded(!m_content.isActivityFolded());
        } else if (row >= 0 && !event->isAutoRepeat()) {
            const QRect rect = rowRect(row).intersected(viewport()->rect());
            openMenu(m_content.item(row), viewport()->mapToGlobal(rect.center()));
        }
        return;
    default:
        QAbstractScrollArea::keyPressEvent(event);
    }
}

bool ChatScrollView::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::SelectAll)) {
            key->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(event);
}

void ChatScrollView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    if (currentRow() < 0 && m_content.count() > 0)
        m_current = m_content.item(m_content.count() - 1);
    m_showsFocus = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason ||
                   event->reason() == Qt::ShortcutFocusReason;
    if (m_showsFocus && currentRow() >= 0)
        showRow(*m_current);
    if (currentRow() >= 0) {
        prepareToTell();
        Q_EMIT currentRowChanged(currentRow());
    }
    viewport()->update();
}

void ChatScrollView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void ChatScrollView::copy()
{
    if (!m_selection.isEmpty())
        QGuiApplication::clipboard()->setText(selectedText());
    else if (currentRow() >= 0)
        m_actions.copy(*m_current);
}

void ChatScrollView::selectAll()
{
    if (currentRow() < 0)
        return;
    m_selection.start(*m_current, {});
    m_selection.extendTo({.segment = m_layout.row(*m_current).segments.size() - 1,
                          .position = std::numeric_limits<int>::max()});
    viewport()->update();
}

std::optional<ChatScrollView::Hit> ChatScrollView::hitTest(const QPoint &position,
                                                           const std::optional<ConversationItem> &within)
{
    const int y = m_offset + position.y();
    const qsizetype row = within ? m_content.position(*within) : m_layout.rowAt(y);
    if (row < 0)
        return std::nullopt;
    const ConversationItem item = m_content.item(row);
    const int inRow = y - m_layout.top(row);
    const qsizetype segment = m_layout.segmentAt(item, inRow);
    const RowFrame rowFrame = m_layout.rowFrame(item);
    const SegmentFrame frame = m_layout.segmentFrame(item, segment);
    const QPointF inText(position.x() - rowFrame.left - frame.left,
                         inRow - m_layout.segmentTop(item, segment) - frame.gap - frame.header);
    const QAbstractTextDocumentLayout *text = m_layout.document(item, segment).documentLayout();
    return Hit{.item = item,
               .position = {.segment = segment, .position = qMax(0, text->hitTest(inText, Qt::FuzzyHit))},
               .link = text->anchorAt(inText)};
}

void ChatScrollView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const QPoint position = event->position().toPoint();
    const auto hit = hitTest(position, std::nullopt);
    if (!hit)
        return;
    m_pressedAt = position;
    m_pressedLink = hit->link;
    m_pressedHeader = hit->item.kind == ConversationItem::Kind::activityHeader;
    m_isDragging = true;
    m_showsFocus = false;
    m_current = hit->item;
    if (m_tripleClickTimer.isActive()) {
        m_tripleClickTimer.stop();
        QTextCursor cursor(&m_layout.document(hit->item, hit->position.segment));
        cursor.setPosition(hit->position.position);
        cursor.select(QTextCursor::BlockUnderCursor);
        const int start = cursor.block().position();
        m_selection.start(hit->item, {.segment = hit->position.segment, .position = start});
        m_selection.extendTo({.segment = hit->position.segment, .position = cursor.selectionEnd()});
    } else if (event->modifiers().testFlag(Qt::ShiftModifier) && m_selection.item() == hit->item) {
        m_selection.extendTo(hit->position);
    } else {
        m_selection.start(hit->item, hit->position);
    }
    setOffset(m_offset);
}

void ChatScrollView::mouseDoubleClickEvent(QMouseEvent *event)
{
    const auto hit = hitTest(event->position().toPoint(), std::nullopt);
    if (!hit || event->button() != Qt::LeftButton)
        return;
    QTextCursor cursor(&m_layout.document(hit->item, hit->position.segment));
    cursor.setPosition(hit->position.position);
    cursor.select(QTextCursor::WordUnderCursor);
    m_selection.start(hit->item, {.segment = hit->position.segment, .position = cursor.selectionStart()});
    m_selection.extendTo({.segment = hit->position.segment, .position = cursor.selectionEnd()});
    m_tripleClickTimer.start(QApplication::doubleClickInterval(), this);
    viewport()->update();
}

void ChatScrollView::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint position = event->position().toPoint();
    if (!m_isDragging || !event->buttons().testFlag(Qt::LeftButton)) {
        const auto hit = hitTest(position, std::nullopt);
        const bool isOnLink = hit && !hit->link.isEmpty();
        viewport()->setCursor(isOnLink ? Qt::PointingHandCursor : Qt::IBeamCursor);
        return;
    }
    if ((position - m_pressedAt).manhattanLength() >= QApplication::startDragDistance()) {
        m_pressedLink.clear();
        m_pressedHeader = false;
    }
    extendSelection(position);
    if (viewport()->rect().contains(position))
        m_dragTimer.stop();
    else if (!m_dragTimer.isActive())
        m_dragTimer.start(dragScrollInterval, this);
}

void ChatScrollView::extendSelection(const QPoint &position)
{
    const QPoint inside(position.x(), qBound(0, position.y(), viewport()->height() - 1));
    if (m_selection.item()) {
        if (const auto hit = hitTest(inside, m_selection.item())) {
            m_selection.extendTo(hit->position);
            viewport()->update();
        }
    }
}

void ChatScrollView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_isDragging)
        return;
    m_isDragging = false;
    m_dragTimer.stop();
    if (std::exchange(m_pressedHeader, false))
        setActivityFolded(!m_content.isActivityFolded());
    else if (!m_pressedLink.isEmpty())
        openLink(std::exchange(m_pressedLink, QString()));
    else if (!m_selection.isEmpty() && QGuiApplication::clipboard()->supportsSelection())
        QGuiApplication::clipboard()->setText(selectedText(), QClipboard::Selection);
}

void ChatScrollView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_tripleClickTimer.timerId()) {
        m_tripleClickTimer.stop();
    } else if (event->timerId() == m_dragTimer.timerId()) {
        const QPoint position = viewport()->mapFromGlobal(QCursor::pos());
        const int beyond = position.y() < 0 ? position.y() : position.y() - viewport()->height();
        verticalScrollBar()->setValue(m_offset + beyond);
        extendSelection(position);
    } else {
        QAbstractScrollArea::timerEvent(event);
    }
}

QString ChatScrollView::toolTipAt(const QPoint &position)
{
    const auto hit = hitTest(position, std::nullopt);
    if (!hit)
        return {};
    return labelText(hit->link.isEmpty() ? m_content.whole(hit->item) : hit->link);
}

bool ChatScrollView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const QString text = toolTipAt(help->pos());
        // As HTML, so that it wraps, and escaped, so that no text brings markup of its own.
        QToolTip::showText(help->globalPos(),
                           text.isEmpty() ? text : u"<qt>%1</qt>"_s.arg(text.toHtmlEscaped()), viewport());
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void ChatScrollView::openLink(const QString &address)
{
    if (isSafeLink(address))
        m_openLink(QUrl(address));
}

void ChatScrollView::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Keyboard) {
        if (const qsizetype row = currentRow(); row >= 0) {
            const QRect rect = rowRect(row).intersected(viewport()->rect());
            openMenu(m_content.item(row), viewport()->mapToGlobal(rect.center()));
        }
        return;
    }
    if (const qsizetype row = rowAt(event->pos()); row >= 0) {
        m_current = m_content.item(row);
        openMenu(*m_current, event->globalPos());
    }
}

void ChatScrollView::openMenu(const ConversationItem &item, const QPoint &globalPosition)
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (!m_selection.isEmpty() && m_selection.item() == item)
        menu->addAction(u"Copy Selection"_s, this, &ChatScrollView::copy);
    for (const QString &name : m_actions.names(item))
        menu->addAction(name, this, [this, name, item] { m_actions.perform(name, item); });
    for (const QString &link : m_layout.links(item)) {
        const QString shown = fontMetrics().elidedText(link, Qt::ElideMiddle, width() / 2);
        menu->addAction(u"Open "_s + QString(shown).replace(u'&', "&&"_L1), this,
                        [this, link] { openLink(link); });
    }
    if (menu->isEmpty()) {
        delete menu;
        return;
    }
    menu->popup(globalPosition);
    menu->setActiveAction(menu->actions().constFirst());
}

} // namespace morvane
