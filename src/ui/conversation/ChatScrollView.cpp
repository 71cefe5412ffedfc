#include "ui/conversation/ChatScrollView.h"

#include "app/ActivityLog.h"
#include "app/Transcript.h"
#include "ui/conversation/ChatScrollViewAccessible.h"
#include "ui/conversation/ConversationPainter.h"

#include <QDesktopServices>
#include <QPaintEvent>
#include <QScrollBar>
#include <QStyle>
#include <QUrl>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Changes of a stream are gathered for one frame of a 60 Hz screen.
constexpr int frameTime = 16;
constexpr int scrollTime = 200;
/// Each round lays out what the round before brought into sight; more are never needed on real text.
constexpr int roundLimit = 50;

} // namespace

ChatScrollView::ChatScrollView(const Transcript &transcript, const ActivityLog &activity,
                               Announcer &announcer, QWidget *parent)
    : QAbstractScrollArea(parent), m_content(transcript, activity), m_layout(m_content),
      m_actions(m_content, announcer), m_codeButtons(m_layout, announcer, *this),
      m_openLink([](const QUrl &url) { QDesktopServices::openUrl(url); })
{
    QAccessible::installFactory(&ChatScrollViewAccessible::create);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(u"Conversation"_s);
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setAutoFillBackground(true);
    viewport()->setMouseTracking(true);
    viewport()->setCursor(Qt::IBeamCursor);

    m_clock.start();
    m_frameTimer.setSingleShot(true);
    connect(&m_frameTimer, &QTimer::timeout, this, &ChatScrollView::flush);
    m_followTimer.setSingleShot(true);
    connect(&m_followTimer, &QTimer::timeout, this, [this] { scrollToBottom(Travel::animated); });
    m_scrolling.setStartValue(0.0);
    m_scrolling.setEndValue(1.0);
    m_scrolling.setDuration(scrollTime);
    m_scrolling.setEasingCurve(QEasingCurve::OutQuad);
    connect(&m_scrolling, &QVariantAnimation::valueChanged, this, &ChatScrollView::advanceScroll);
    connect(&m_scrolling, &QVariantAnimation::finished, this, &ChatScrollView::endScroll);

    connect(&transcript, &Transcript::messagesReset, this, &ChatScrollView::rebuild);
    connect(&transcript, &Transcript::messageAppended, this, &ChatScrollView::takeRows);
    connect(&transcript, &Transcript::messageChanged, this, &ChatScrollView::takeMessageChange);
    connect(&transcript, &Transcript::textAppended, this, &ChatScrollView::takeGrowth);
    connect(&activity, &ActivityLog::stepAppended, this, &ChatScrollView::takeRows);
    connect(&activity, &ActivityLog::cleared, this, &ChatScrollView::rebuild);
    updateStyle();
}

void ChatScrollView::updateStyle()
{
    m_layout.setStyle(ConversationStyle(font(), palette()));
    verticalScrollBar()->setSingleStep(m_layout.style().lineHeight);
    schedule();
}

void ChatScrollView::rebuild()
{
    m_scrolling.stop();
    m_selection.clear();
    m_current.reset();
    m_grownMessage.reset();
    m_layout.reset();
    m_tracker.lock();
    m_keep = Keep::bottom;
    schedule();
    prepareToTell();
    Q_EMIT rowsReset();
}

void ChatScrollView::takeMessageChange(qsizetype row)
{
    const ConversationItem item{.kind = ConversationItem::Kind::message, .index = row};
    if (m_selection.item() == item)
        m_selection.clear();
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
    if (folded && isStep(m_selection.item()))
        m_selection.clear();
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
    const Keep keep = std::exchange(m_keep, Keep::anchor);
    relayout(keep);
    if (keep == Keep::anchor)
        scrollToBottom(Travel::animated);
}

int ChatScrollView::maximumOffset() const
{
    return qMax(0, m_layout.height() - viewport()->height());
}

void ChatScrollView::relayout(Keep keep)
{
    const ScrollAnchor anchor = m_anchor;
    m_layout.beginPass();
    int offset = m_offset;
    for (int round = 0; round < roundLimit; ++round) {
        offset = keep == Keep::bottom ? maximumOffset() : qBound(0, anchoredOffset(anchor), maximumOffset());
        if (!m_layout.prepare(offset, offset + viewport()->height()))
            break;
    }
    setOffset(offset);
    if (!m_layout.isPassComplete()) {
        m_keep = keep;
        schedule();
    }
}

void ChatScrollView::setOffset(int offset)
{
    m_offset = qBound(0, offset, maximumOffset());
    m_anchor = anchorAt(m_offset);
    m_isAdjusting = true;
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setRange(0, maximumOffset());
    verticalScrollBar()->setValue(m_offset);
    m_isAdjusting = false;
    m_codeButtons.place(m_offset, viewport()->height(), m_current);
    viewport()->update();
}

ScrollAnchor ChatScrollView::anchorAt(int offset)
{
    const qsizetype firstRow = m_layout.rowAt(offset);
    if (firstRow < 0)
        return {};
    // What is already laid out must not move; what is only estimated has no place to keep yet.
    for (qsizetype row = firstRow; row < m_content.count(); ++row) {
        const ConversationItem item = m_content.item(row);
        const int rowTop = m_layout.top(row);
        if (rowTop >= offset + viewport()->height())
            break;
        const RowLayout &layout = m_layout.peek(item);
        int top = rowTop + m_layout.rowFrame(item).top;
        for (qsizetype i = 0; i < layout.segments.size(); ++i) {
            const SegmentLayout &segment = layout.segments.at(i);
            const bool isVisible = top + segment.height > offset && top < offset + viewport()->height();
            if (isVisible && segment.isMeasured)
                return {.item = item, .segment = i, .source = segment.segment.from, .screenY = top - offset};
            top += segment.height;
        }
    }
    const ConversationItem item = m_content.item(firstRow);
    const int y = offset - m_layout.top(firstRow);
    if (!m_layout.peek(item).isSplit())
        return {.item = item, .within = static_cast<double>(y) / qMax(1, m_layout.rowHeight(item))};
    const qsizetype index = m_layout.segmentAt(item, y);
    const SegmentLayout &segment = m_layout.peek(item).segments.at(index);
    const int inSegment = y - m_layout.segmentTop(item, index);
    return {.item = item,
            .segment = index,
            .source = segment.segment.from,
            .within = static_cast<double>(inSegment) / qMax(1, segment.height)};
}

int ChatScrollView::anchoredOffset(const ScrollAnchor &anchor)
{
    const qsizetype row = m_content.position(anchor.item);
    if (row < 0)
        return m_offset;
    const int rowTop = m_layout.top(row);
    if (anchor.segment < 0)
        return rowTop + qRound(anchor.within * m_layout.rowHeight(anchor.item)) - anchor.screenY;
    const auto &segments = m_layout.row(anchor.item).segments;
    qsizetype index = anchor.segment;
    if (index >= segments.size() || segments.at(index).segment.from != anchor.source) {
        index = 0;
        while (index + 1 < segments.size() && segments.at(index + 1).segment.from > 0 &&
               segments.at(index + 1).segment.from <= anchor.source) {
            ++index;
        }
    }
    return rowTop + m_layout.segmentTop(anchor.item, index) +
           qRound(anchor.within * segments.at(index).height) - anchor.screenY;
}

void ChatScrollView::scrollToBottom(Travel travel)
{
    if (!m_tracker.isNearBottom() || m_offset >= maximumOffset() ||
        m_scrolling.state() == QVariantAnimation::Running) {
        return;
    }
    const qint64 now = m_clock.elapsed();
    if (!m_tracker.mayScroll(now)) {
        if (!m_followTimer.isActive())
            m_followTimer.start(static_cast<int>(m_tracker.pause(now)));
        return;
    }
    const bool animates = style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
    if (travel == Travel::atOnce || !animates || !isVisible()) {
        relayout(Keep::bottom);
        return;
    }
    // What lies far above would only flicker past.
    m_scrollStart = qMax(m_offset, maximumOffset() - 2 * viewport()->height());
    m_scrolling.start();
}

void ChatScrollView::advanceScroll(const QVariant &progress)
{
    if (m_scrolling.state() != QVariantAnimation::Running)
        return;
    const int distance = maximumOffset() - m_scrollStart;
    const int offset = m_scrollStart + qRound(distance * progress.toDouble());
    m_layout.beginPass();
    m_layout.prepare(offset, offset + viewport()->height());
    setOffset(offset);
    if (!m_layout.isPassComplete())
        schedule();
}

void ChatScrollView::endScroll()
{
    relayout(Keep::bottom);
}

void ChatScrollView::scrollContentsBy(int, int)
{
    if (m_isAdjusting)
        return;
    m_scrolling.stop();
    m_offset = verticalScrollBar()->value();
    m_anchor = anchorAt(m_offset);
    if (m_offset == 0 && m_content.count() > 0)
        m_anchor = {.item = m_content.item(0), .screenY = m_layout.style().endGap};
    relayout(m_offset >= verticalScrollBar()->maximum() ? Keep::bottom : Keep::anchor);
    m_tracker.updateNearBottom(m_layout.height(),
                               {.offset = static_cast<double>(m_offset),
                                .viewportHeight = static_cast<double>(viewport()->height())});
}

void ChatScrollView::resizeEvent(QResizeEvent *)
{
    m_layout.setWidth(viewport()->width());
    m_scrolling.stop();
    relayout(m_tracker.isNearBottom() ? Keep::bottom : Keep::anchor);
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
    ConversationPainter(m_layout, m_selection, palette())
        .paint(painter, event->rect(),
               {.offset = m_offset, .focusRow = hasFocus() && m_showsFocus ? currentRow() : -1});
}

void ChatScrollView::changeEvent(QEvent *event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange)
        updateStyle();
}

bool ChatScrollView::isSettled() const
{
    return !m_isDirty && !m_followTimer.isActive() && m_scrolling.state() != QVariantAnimation::Running;
}

qsizetype ChatScrollView::currentRow() const
{
    return m_current ? m_content.position(*m_current) : -1;
}

QRect ChatScrollView::rowRect(qsizetype row) const
{
    return {0, m_layout.top(row) - m_offset, viewport()->width(), m_layout.rowHeight(m_content.item(row))};
}

qsizetype ChatScrollView::rowAt(const QPoint &position) const
{
    const qsizetype row = m_layout.rowAt(m_offset + position.y());
    return row >= 0 && rowRect(row).contains(position) ? row : -1;
}

} // namespace morvane
