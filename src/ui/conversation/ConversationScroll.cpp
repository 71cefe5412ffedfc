#include "ui/conversation/ConversationScroll.h"

#include "ui/conversation/ConversationLayout.h"
#include "ui/conversation/TextSelection.h"

#include <QAbstractScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <utility>

namespace morvane {

namespace {

constexpr int scrollTime = 200;
/// Each round lays out what the round before brought into sight; more are never needed on real text.
constexpr int roundLimit = 50;

} // namespace

ConversationScroll::ConversationScroll(ConversationLayout &layout, QAbstractScrollArea &area)
    : m_layout(layout), m_area(area), m_reading(layout)
{
    m_clock.start();
    connect(&m_layout.splitter(), &RowSplitter::done, this, &ConversationScroll::isUnfinished);
    m_followTimer.setSingleShot(true);
    connect(&m_followTimer, &QTimer::timeout, this, [this] { scrollToBottom(Travel::animated); });
    m_scrolling.setStartValue(0.0);
    m_scrolling.setEndValue(1.0);
    m_scrolling.setDuration(scrollTime);
    m_scrolling.setEasingCurve(QEasingCurve::OutQuad);
    connect(&m_scrolling, &QVariantAnimation::valueChanged, this, &ConversationScroll::advance);
    connect(&m_scrolling, &QVariantAnimation::finished, this, [this] { relayout(Keep::bottom); });
}

int ConversationScroll::viewHeight() const
{
    return m_area.viewport()->height();
}

int ConversationScroll::maximumOffset() const
{
    return qMax(0, m_layout.height() - viewHeight());
}

bool ConversationScroll::isSettled() const
{
    return !m_followTimer.isActive() && m_scrolling.state() != QVariantAnimation::Running;
}

void ConversationScroll::openAtBottom()
{
    m_scrolling.stop();
    follow();
    m_keep = Keep::bottom;
}

void ConversationScroll::showFrame()
{
    const Keep keep = std::exchange(m_keep, Keep::anchor);
    relayout(keep);
    if (keep == Keep::anchor)
        scrollToBottom(Travel::animated);
}

void ConversationScroll::takeSize()
{
    m_scrolling.stop();
    relayout(m_tracker.isNearBottom() ? Keep::bottom : Keep::anchor);
}

void ConversationScroll::relayout(Keep keep)
{
    ScrollAnchor anchor = m_anchor;
    m_layout.beginPass();
    int wanted = m_offset;
    for (int round = 0; round < roundLimit; ++round) {
        wanted = keep == Keep::bottom ? maximumOffset() : m_reading.offsetOf(anchor).value_or(m_offset);
        const int offset = qBound(0, wanted, maximumOffset());
        if (!m_layout.prepare(offset, offset + viewHeight()))
            break;
    }
    setOffset(wanted);
    // The same line is kept through any number of changes; a new one each time would wander off.
    if (keep == Keep::anchor && wanted == m_offset && anchor.position >= 0)
        m_anchor = anchor;
    if (!m_layout.isPassComplete() || m_layout.isWaiting())
        m_keep = keep;
    if (!m_layout.isPassComplete())
        Q_EMIT isUnfinished();
}

void ConversationScroll::setOffset(int offset)
{
    m_offset = qBound(0, offset, maximumOffset());
    m_anchor = m_reading.at(m_offset, viewHeight());
    QScrollBar *bar = m_area.verticalScrollBar();
    m_isAdjusting = true;
    bar->setPageStep(viewHeight());
    bar->setRange(0, maximumOffset());
    bar->setValue(m_offset);
    m_isAdjusting = false;
    Q_EMIT moved();
}

void ConversationScroll::scrollToBottom(Travel travel)
{
    if (!m_tracker.isNearBottom() || m_offset >= maximumOffset() ||
        m_scrolling.state() == QVariantAnimation::Running)
        return;
    const qint64 now = m_clock.elapsed();
    if (!m_tracker.mayScroll(now)) {
        if (!m_followTimer.isActive())
            m_followTimer.start(static_cast<int>(m_tracker.pause(now)));
        return;
    }
    const bool animates =
        m_area.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &m_area) > 0;
    if (travel == Travel::atOnce || !animates || !m_area.isVisible()) {
        relayout(Keep::bottom);
        return;
    }
    // What lies far above would only flicker past.
    m_scrollStart = qMax(m_offset, maximumOffset() - 2 * viewHeight());
    m_scrolling.start();
}

void ConversationScroll::advance(const QVariant &progress)
{
    if (m_scrolling.state() != QVariantAnimation::Running)
        return;
    const int distance = maximumOffset() - m_scrollStart;
    const int offset = m_scrollStart + qRound(distance * progress.toDouble());
    m_layout.beginPass();
    m_layout.prepare(offset, offset + viewHeight());
    setOffset(offset);
    if (!m_layout.isPassComplete())
        Q_EMIT isUnfinished();
}

void ConversationScroll::takeBar()
{
    if (m_isAdjusting)
        return;
    const QScrollBar *bar = m_area.verticalScrollBar();
    stopForUser();
    m_offset = bar->value();
    m_anchor = m_reading.at(m_offset, viewHeight());
    if (m_offset == 0 && m_layout.content().count() > 0)
        m_anchor = {.item = m_layout.content().item(0), .screenY = m_layout.style().endGap};
    relayout(m_offset >= bar->maximum() ? Keep::bottom : Keep::anchor);
    noteUserPlace();
}

void ConversationScroll::stopForUser()
{
    m_scrolling.stop();
    // The frame that would have gone to the end may not have been drawn yet.
    m_keep = Keep::anchor;
}

void ConversationScroll::noteUserPlace()
{
    const bool wasNear = m_tracker.isNearBottom();
    m_tracker.updateNearBottom(m_layout.height(), {.offset = static_cast<double>(m_offset),
                                                   .viewportHeight = static_cast<double>(viewHeight())});
    if (m_tracker.isNearBottom() != wasNear)
        Q_EMIT nearBottomChanged(!wasNear);
}

void ConversationScroll::follow()
{
    const bool wasNear = m_tracker.isNearBottom();
    m_tracker.lock();
    if (!wasNear)
        Q_EMIT nearBottomChanged(true);
}

void ConversationScroll::scrollBy(int pixels)
{
    m_area.verticalScrollBar()->setValue(m_offset + pixels);
}

void ConversationScroll::scrollPage(int direction)
{
    const int line = m_layout.style().lineHeight;
    scrollBy(direction * qMax(line, viewHeight() - 2 * line));
}

void ConversationScroll::scrollToEnd()
{
    m_scrolling.stop();
    follow();
    relayout(Keep::bottom);
}

void ConversationScroll::show(const ConversationItem &item)
{
    const qsizetype row = m_layout.content().position(item);
    // The row's height is known only once it was laid out, which needs it in sight: twice is enough.
    for (int round = 0; round < 2; ++round) {
        const int top = m_layout.top(row);
        const int bottom = top + m_layout.rowHeight(item);
        if (top >= m_offset && bottom <= m_offset + viewHeight())
            break;
        const bool fits = bottom - top <= viewHeight();
        const bool entersFromAbove = top < m_offset;
        const int offset = !fits || entersFromAbove ? top : bottom - viewHeight();
        stopForUser();
        m_anchor = {.item = item, .screenY = top - offset};
        relayout(Keep::anchor);
    }
    noteUserPlace();
    setOffset(m_offset);
}

void ConversationScroll::show(const TextPlace &place)
{
    const SegmentLayout segment = m_layout.row(place.item).segments.at(place.position.segment);
    ScrollAnchor anchor{.item = place.item,
                        .part = segment.part,
                        .from = segment.segment.from,
                        .position = place.position.position};
    const int line = m_layout.style().lineHeight;
    const int y = m_reading.offsetOf(anchor).value_or(m_offset) - m_offset;
    stopForUser();
    if (y < line || y > viewHeight() - 2 * line) {
        anchor.screenY = viewHeight() / 3;
        m_anchor = anchor;
        relayout(Keep::anchor);
    }
    noteUserPlace();
}

} // namespace morvane
