#include "ui/conversation/ChatScrollView.h"

#include "app/ActivityLog.h"
#include "app/Transcript.h"
#include "ui/conversation/ChatScrollViewAccessible.h"
#include "ui/conversation/ConversationPainter.h"
#include "ui/conversation/RowMenu.h"
#include "ui/markdown/MarkdownParser.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Changes of a stream are gathered for one frame of a 60 Hz screen.
constexpr int frameTime = 16;

} // namespace

ChatScrollView::ChatScrollView(const Transcript &transcript, const ActivityLog &activity,
                               Announcer &announcer, QWidget *parent)
    : QAbstractScrollArea(parent), m_content(transcript, activity), m_layout(m_content),
      m_scroll(m_layout, *this), m_gestures(m_layout, m_scroll, *viewport()), m_actions(m_content, announcer),
      m_codeButtons(m_layout, announcer, *this),
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
    connect(&m_gestures, &SelectionGestures::selectionChanged, viewport(), qOverload<>(&QWidget::update));
    connect(&m_gestures, &SelectionGestures::rowPressed, this, [this](const ConversationItem &item) {
        m_showsFocus = false;
        m_current = item;
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
    m_layout.setStyle(ConversationStyle(font(), palette()));
    verticalScrollBar()->setSingleStep(m_layout.style().lineHeight);
    schedule();
}

void ChatScrollView::rebuild()
{
    m_gestures.clear();
    m_current.reset();
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
    if (m_gestures.selection().item() == item)
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
    if (folded && isStep(m_gestures.selection().item()))
        m_gestures.clear();
    if (folded && isStep(m_current))
        m_current = ConversationItem{.kind = ConversationItem::Kind::activityHeader, .index = 0};
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
    m_codeButtons.place(m_scroll.offset(), viewport()->height(), m_current);
    viewport()->update();
}

void ChatScrollView::scrollContentsBy(int, int)
{
    m_scroll.takeBar();
}

void ChatScrollView::resizeEvent(QResizeEvent *)
{
    m_layout.setWidth(viewport()->width());
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

qsizetype ChatScrollView::currentRow() const
{
    return m_current ? m_content.position(*m_current) : -1;
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

void ChatScrollView::setCurrentRow(qsizetype row)
{
    if (row < 0 || row >= m_content.count())
        return;
    m_current = m_content.item(row);
    m_scroll.show(*m_current);
    tellCurrentRow();
}

void ChatScrollView::tellCurrentRow()
{
    prepareToTell();
    Q_EMIT currentRowChanged(currentRow());
}

void ChatScrollView::moveRow(int direction)
{
    const qsizetype last = m_content.count() - 1;
    setCurrentRow(currentRow() < 0 ? last : qBound<qsizetype>(0, currentRow() + direction, last));
}

void ChatScrollView::movePage(int direction)
{
    const int line = m_layout.style().lineHeight;
    m_scroll.scrollBy(direction * qMax(line, viewport()->height() - 2 * line));
    // The first row that begins in sight; within a row taller than the page, that row.
    const int offset = m_scroll.offset();
    qsizetype row = m_layout.rowAt(offset);
    const bool beginsAbove = m_layout.top(row) < offset;
    if (beginsAbove && row + 1 < m_content.count() &&
        m_layout.top(row + 1) < offset + viewport()->height() / 2)
        ++row;
    m_current = m_content.item(row);
    placeButtons();
    tellCurrentRow();
}

void ChatScrollView::pressRow(qsizetype row)
{
    if (row >= 0 && m_current->kind == ConversationItem::Kind::activityHeader)
        toggleActivity();
    else
        openMenuOnRow(row);
}

void ChatScrollView::keyPressEvent(QKeyEvent *event)
{
    if (m_content.count() == 0) {
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
    const int direction = event->key() == Qt::Key_Up || event->key() == Qt::Key_PageUp ? -1 : 1;
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (event->modifiers().testFlag(Qt::ControlModifier))
            m_scroll.scrollBy(direction * verticalScrollBar()->singleStep());
        else
            moveRow(direction);
        return;
    case Qt::Key_Home:
        setCurrentRow(0);
        return;
    case Qt::Key_End:
        setCurrentRow(m_content.count() - 1);
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
        return;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        movePage(direction);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (!event->isAutoRepeat())
            pressRow(currentRow());
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
        m_scroll.show(*m_current);
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
        QGuiApplication::clipboard()->setText(selectedText());
    else if (currentRow() >= 0)
        m_actions.copy(*m_current);
}

void ChatScrollView::selectAll()
{
    if (currentRow() >= 0)
        m_gestures.selectRow(*m_current);
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
        m_current = m_content.item(row);
        openMenu(*m_current, event->globalPos());
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
    const bool hasSelection = !m_gestures.selection().isEmpty() && m_gestures.selection().item() == item;
    auto *menu =
        new RowMenu(m_actions, item, hasSelection ? RowMenu::Selection::within : RowMenu::Selection::none,
                    m_layout.links(item), this);
    connect(menu, &RowMenu::copySelectionRequested, this, &ChatScrollView::copy);
    connect(menu, &RowMenu::linkRequested, this, &ChatScrollView::openLink);
    menu->popupAt(globalPosition);
}

} // namespace morvane
