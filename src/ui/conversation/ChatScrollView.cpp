#include "ui/conversation/ChatScrollView.h"

#include "app/ActivityLog.h"
#include "app/Transcript.h"
#include "ui/conversation/ChatScrollViewAccessible.h"
#include "ui/conversation/ConversationPainter.h"
#include "ui/conversation/FoundText.h"
#include "ui/conversation/RowMenu.h"
#include "ui/markdown/MarkdownParser.h"

#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QUrl>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Changes of a stream are gathered for one frame of a 60 Hz screen.
constexpr int frameTime = 16;

} // namespace

ChatScrollView::ChatScrollView(const Transcript &transcript, const ActivityLog &activity,
                               Announcer &announcer, QWidget *parent)
    : QAbstractScrollArea(parent), m_content(transcript, activity), m_layout(m_content),
      m_scroll(m_layout, *this), m_gestures(m_layout, m_scroll, *viewport()),
      m_cursor(m_layout, m_scroll, *viewport()), m_actions(m_content, announcer),
      m_buttons(m_layout, announcer, *this),
      m_openLink([](const QUrl &url) { QDesktopServices::openUrl(url); })
{
    QAccessible::installFactory(&ChatScrollViewAccessible::create);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(u"Conversation"_s);
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setAutoFillBackground(true);

    m_frameTimer.setSingleShot(true);
    connect(&m_frameTimer, &QTimer::timeout, this, &ChatScrollView::flush);
    connect(&m_scroll, &ConversationScroll::moved, this, &ChatScrollView::placeButtons);
    connect(&m_scroll, &ConversationScroll::isUnfinished, this, &ChatScrollView::schedule);
    connect(&m_scroll, &ConversationScroll::nearBottomChanged, this, &ChatScrollView::nearBottomChanged);
    connect(&m_cursor, &RowCursor::moved, this, &ChatScrollView::tellCurrentRow);
    connect(&m_gestures, &SelectionGestures::selectionChanged, viewport(), qOverload<>(&QWidget::update));
    connect(&m_gestures, &SelectionGestures::selectionChanged, this, &ChatScrollView::selectionChanged);
    connect(&m_gestures, &SelectionGestures::rowPressed, this, [this](const ConversationItem &item) {
        m_showsFocus = false;
        m_selectedFrom.reset();
        m_cursor.set(item);
        placeButtons();
    });
    connect(&m_gestures, &SelectionGestures::linkPressed, this, &ChatScrollView::openLink);
    connect(&m_gestures, &SelectionGestures::headerPressed, this, &ChatScrollView::toggleActivity);
    connectContent(transcript, activity);
    updateStyle();
}

void ChatScrollView::connectContent(const Transcript &transcript, const ActivityLog &activity)
{
    connect(&transcript, &Transcript::messagesReset, this, &ChatScrollView::rebuild);
    connect(&transcript, &Transcript::messageAppended, this, &ChatScrollView::takeRows);
    connect(&transcript, &Transcript::messageChanged, this, &ChatScrollView::takeMessageChange);
    connect(&transcript, &Transcript::textAppended, this, &ChatScrollView::takeGrowth);
    connect(&activity, &ActivityLog::stepAppended, this, &ChatScrollView::takeRows);
    connect(&activity, &ActivityLog::cleared, this, &ChatScrollView::rebuild);
}

void ChatScrollView::updateStyle()
{
    m_layout.setStyle(ConversationStyle(font(), palette(), m_zoom));
    verticalScrollBar()->setSingleStep(m_layout.style().lineHeight);
    schedule();
}

void ChatScrollView::setZoom(int percent)
{
    if (percent == m_zoom)
        return;
    m_zoom = percent;
    updateStyle();
}

void ChatScrollView::jumpToLatest()
{
    m_cursor.set(m_content.item(m_content.count() - 1));
    m_scroll.scrollToEnd();
}

void ChatScrollView::rebuild()
{
    m_gestures.clear();
    m_selectedFrom.reset();
    m_cursor.clear();
    m_grownMessage.reset();
    m_layout.reset();
    m_scroll.openAtBottom();
    schedule();
    prepareToTell();
    Q_EMIT rowsReset();
}

void ChatScrollView::takeMessageChange(qsizetype row)
{
    const ConversationItem item{.kind = ConversationItem::Kind::message, .index = row};
    if (m_gestures.selection().touches(item))
        m_gestures.clear();
    if (m_grownMessage == row)
        m_grownMessage.reset();
    m_layout.invalidate(item);
    schedule();
    prepareToTell();
    Q_EMIT rowChanged(m_content.position(item));
}

void ChatScrollView::takeGrowth(qsizetype row, qsizetype from)
{
    if (from == 0) {
        // The text takes the place of another one, "Thinking…".
        m_layout.invalidate({.kind = ConversationItem::Kind::message, .index = row});
    } else {
        m_grownMessage = row;
    }
    schedule();
}

void ChatScrollView::takeRows()
{
    m_layout.update();
    schedule();
    prepareToTell();
    Q_EMIT rowsAdded();
}

void ChatScrollView::setActivityFolded(bool folded)
{
    const auto isStep = [](const std::optional<ConversationItem> &item) {
        return item && item->kind == ConversationItem::Kind::activityStep;
    };
    if (folded == m_content.isActivityFolded())
        return;
    m_content.setActivityFolded(folded);
    if (folded)
        m_gestures.clear();
    if (folded && isStep(m_cursor.item()))
        m_cursor.set({.kind = ConversationItem::Kind::activityHeader, .index = 0});
    m_layout.update();
    schedule();
    prepareToTell();
    if (folded)
        Q_EMIT stepsFolded();
    else
        Q_EMIT rowsAdded();
}

void ChatScrollView::prepareToTell()
{
    // Whoever listens must have been made before there is something to hear.
    if (QAccessible::isActive())
        QAccessible::queryAccessibleInterface(this);
}

void ChatScrollView::schedule()
{
    m_isDirty = true;
    if (!m_frameTimer.isActive())
        m_frameTimer.start(frameTime);
}

void ChatScrollView::flush()
{
    m_frameTimer.stop();
    if (!m_isDirty || !isVisible())
        return;
    m_isDirty = false;
    if (m_grownMessage) {
        m_layout.grow({.kind = ConversationItem::Kind::message, .index = *m_grownMessage});
        m_grownMessage.reset();
    }
    m_scroll.showFrame();
}

void ChatScrollView::placeButtons()
{
    m_buttons.place(m_scroll.offset(), viewport()->height(), m_cursor.item());
    viewport()->update();
}

void ChatScrollView::scrollContentsBy(int, int)
{
    m_scroll.takeBar();
}

void ChatScrollView::resizeEvent(QResizeEvent *)
{
    // The same without the scroll bar: laying out anew for its coming and going may make it come and go for
    // ever.
    m_layout.setWidth(maximumViewportSize().width() - verticalScrollBar()->sizeHint().width());
    m_scroll.takeSize();
}

void ChatScrollView::showEvent(QShowEvent *event)
{
    QAbstractScrollArea::showEvent(event);
    schedule();
}

void ChatScrollView::paintEvent(QPaintEvent *event)
{
    flush();
    QPainter painter(viewport());
    ConversationPainter(m_layout, m_gestures.selection(), palette())
        .paint(painter, event->rect(),
               {.offset = m_scroll.offset(), .focusRow = hasFocus() && m_showsFocus ? currentRow() : -1});
}

void ChatScrollView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange)
        updateStyle();
}

QRect ChatScrollView::rowRect(qsizetype row) const
{
    return {0, m_layout.top(row) - m_scroll.offset(), viewport()->width(),
            m_layout.rowHeight(m_content.item(row))};
}

qsizetype ChatScrollView::rowAt(const QPoint &position) const
{
    const qsizetype row = m_layout.rowAt(m_scroll.offset() + position.y());
    return row >= 0 && rowRect(row).contains(position) ? row : -1;
}

qsizetype ChatScrollView::firstVisibleMessage() const
{
    const qsizetype row = m_layout.rowAt(m_scroll.offset());
    return qMin(row, m_content.messageCount() - 1);
}

void ChatScrollView::tellCurrentRow()
{
    placeButtons();
    prepareToTell();
    Q_EMIT currentRowChanged(currentRow());
}

void ChatScrollView::pressRow()
{
    if (m_cursor.item() && m_cursor.item()->kind == ConversationItem::Kind::activityHeader)
        toggleActivity();
    else
        openMenuOnRow(currentRow());
}

bool ChatScrollView::moveByKey(const QKeyEvent &event)
{
    const std::optional<ConversationItem> before = m_cursor.item();
    if (!m_cursor.takeKey(event))
        return false;
    const bool selects = event.modifiers().testFlag(Qt::ShiftModifier);
    if (selects && !m_selectedFrom)
        m_selectedFrom = before;
    if (selects && m_selectedFrom && m_cursor.item())
        m_gestures.selectRows(*m_selectedFrom, *m_cursor.item());
    else if (!selects && std::exchange(m_selectedFrom, std::nullopt))
        m_gestures.clear();
    return true;
}

void ChatScrollView::keyPressEvent(QKeyEvent *event)
{
    if (m_content.count() == 0) {
        QAbstractScrollArea::keyPressEvent(event);
        return;
    }
    const bool isPress =
        event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Space;
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (isPress) {
        m_showsFocus = true;
        if (!event->isAutoRepeat())
            pressRow();
    } else if (moveByKey(*event)) {
        m_showsFocus = true;
    } else {
        event->ignore(); // a letter goes to the window
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
        m_cursor.set(m_content.item(m_content.count() - 1));
    const bool comesByKey = event->reason() == Qt::TabFocusReason ||
                            event->reason() == Qt::BacktabFocusReason ||
                            event->reason() == Qt::ShortcutFocusReason;
    // Who gives it back, a menu, a sheet or another window, finds the mark as it was.
    m_showsFocus = comesByKey || (m_showsFocus && event->reason() != Qt::MouseFocusReason);
    if (comesByKey && currentRow() >= 0)
        m_scroll.show(*m_cursor.item());
    if (currentRow() >= 0)
        tellCurrentRow();
    viewport()->update();
}

void ChatScrollView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void ChatScrollView::copy()
{
    if (!m_gestures.selection().isEmpty())
        m_gestures.copy();
    else if (currentRow() >= 0)
        m_actions.copy(*m_cursor.item());
}

void ChatScrollView::selectAll()
{
    if (m_content.count() > 0)
        m_gestures.selectRows(m_content.item(0), m_content.item(m_content.count() - 1));
}

QString ChatScrollView::showMatch(const FoundText &found, const QString &words)
{
    const MatchPlace place = placeOf(m_layout, found, words);
    m_selectedFrom.reset();
    m_cursor.set(place.from.item);
    m_gestures.select(place.from, place.to);
    m_scroll.show(place.from);
    placeButtons();
    return place.line;
}

void ChatScrollView::openLink(const QString &address)
{
    if (isSafeLink(address))
        m_openLink(QUrl(address));
}

void ChatScrollView::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Keyboard) {
        openMenuOnRow(currentRow());
    } else if (const qsizetype row = rowAt(event->pos()); row >= 0) {
        m_cursor.set(m_content.item(row));
        openMenu(m_content.item(row), event->globalPos());
    }
}

void ChatScrollView::openMenuOnRow(qsizetype row)
{
    if (row < 0)
        return;
    const QRect rect = rowRect(row).intersected(viewport()->rect());
    openMenu(m_content.item(row), viewport()->mapToGlobal(rect.center()));
}

void ChatScrollView::openMenu(const ConversationItem &item, const QPoint &globalPosition)
{
    auto *menu =
        new RowMenu(m_actions, item, isSelected(item) ? RowMenu::Selection::within : RowMenu::Selection::none,
                    m_layout.links(item), this);
    connect(menu, &RowMenu::copySelectionRequested, this, &ChatScrollView::copy);
    connect(menu, &RowMenu::linkRequested, this, &ChatScrollView::openLink);
    menu->popupAt(globalPosition);
}

} // namespace morvane
