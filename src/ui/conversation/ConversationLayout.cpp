#include "ui/conversation/ConversationLayout.h"

#include "ui/conversation/DocumentBuilder.h"
#include "ui/conversation/MessageParts.h"
#include "ui/markdown/LayoutCost.h"
#include "ui/markdown/PlainTextSegmenter.h"

#include <QTextFormat>
#include <algorithm>

namespace morvane {

namespace {

/// Text laid out in one pass, in usual letters; what else is in sight comes with the next frame. More than
/// most windows hold.
constexpr qsizetype passLimit = 2 * segmentLimit;
/// What a line costs besides its letters.
constexpr qsizetype lineCost = 20;

using Kind = ConversationItem::Kind;

/// Formatted text is parsed, and shaped for each change of style; what is dear costs as much again to draw.
qsizetype workFor(qsizetype cost, bool isDear, TextSegment::Kind kind, qsizetype lines)
{
    return cost * (kind == TextSegment::Kind::plain ? 1 : 2) * (isDear ? 2 : 1) + lineCost * lines;
}

qsizetype indexOf(const ConversationItem &item)
{
    return item.kind == Kind::activityStep ? item.index + 1 : item.index;
}

bool isMessage(const ConversationItem &item)
{
    return item.kind == Kind::message;
}

} // namespace

HeightIndex &ConversationLayout::heights(const ConversationItem &item)
{
    return isMessage(item) ? m_messageHeights : m_activityHeights;
}

const HeightIndex &ConversationLayout::heights(const ConversationItem &item) const
{
    return isMessage(item) ? m_messageHeights : m_activityHeights;
}

RowLayout &ConversationLayout::rowLayout(const ConversationItem &item)
{
    return isMessage(item) ? m_messages[item.index] : m_activity[indexOf(item)];
}

const RowLayout &ConversationLayout::rowLayout(const ConversationItem &item) const
{
    return isMessage(item) ? m_messages.at(item.index) : m_activity.at(indexOf(item));
}

void ConversationLayout::setStyle(const ConversationStyle &style)
{
    m_style = style;
    reset();
}

void ConversationLayout::setWidth(int width)
{
    if (width == m_frames.width())
        return;
    m_frames.setWidth(width);
    for (qsizetype row = 0; row < m_content.count(); ++row) {
        const ConversationItem item = m_content.item(row);
        RowLayout &layout = rowLayout(item);
        for (qsizetype i = 0; i < layout.segments.size(); ++i) {
            layout.segments[i].isMeasured = false;
            layout.segments[i].height = m_frames.estimatedHeight(item, layout, i);
        }
        updateRowHeight(item);
    }
}

void ConversationLayout::reset()
{
    m_splitter.forgetAll();
    m_documents.clear();
    m_messages.clear();
    m_activity.clear();
    m_messageHeights.clear();
    m_activityHeights.clear();
    update();
}

void ConversationLayout::update()
{
    while (m_messages.size() < m_content.messageCount()) {
        const ConversationItem item{.kind = Kind::message, .index = m_messages.size()};
        m_messages.emplaceBack();
        m_messageHeights.append(m_frames.estimatedHeight(item));
    }
    if (m_activity.size() > m_content.activityCount()) {
        m_activity.resize(m_content.activityCount());
        m_activityHeights.truncate(m_activity.size());
    }
    while (m_activity.size() < m_content.activityCount()) {
        const bool isHeader = m_activity.isEmpty();
        const ConversationItem item{.kind = isHeader ? Kind::activityHeader : Kind::activityStep,
                                    .index = isHeader ? 0 : m_activity.size() - 1};
        m_activity.emplaceBack();
        m_activityHeights.append(m_frames.estimatedHeight(item));
    }
}

void ConversationLayout::grow(const ConversationItem &item)
{
    RowLayout &row = rowLayout(item);
    if (!row.isSplit()) {
        updateRowHeight(item);
        return;
    }
    QList<SegmentLayout> below;
    while (row.segments.last().part != RowPart::body)
        below.prepend(row.segments.takeLast());
    const SegmentLayout last = row.segments.takeLast();
    const qsizetype first = row.segments.size();
    QList<TextSegment> tail{last.segment};
    const QString text = m_content.text(item);
    extendPlainSegments(tail, text);
    addSegments(row, RowPart::body, tail, text);
    estimate(item, first);
    // While a segment is in sight its measured height is closer to the next one than any estimate.
    if (last.isMeasured && row.segments.at(first).segment.length >= last.segment.length)
        row.segments[first].height = qMax(last.height, row.segments.at(first).height);
    row.segments += below;
    updateRowHeight(item);
}

void ConversationLayout::invalidate(const ConversationItem &item)
{
    m_splitter.forget(item);
    m_documents.removeRow(item);
    rowLayout(item) = RowLayout();
    updateRowHeight(item);
}

int ConversationLayout::height() const
{
    return top(m_content.count()) + m_style.endGap;
}

int ConversationLayout::top(qsizetype row) const
{
    const qsizetype completed = m_content.completedCount();
    if (row <= completed)
        return m_style.endGap + m_messageHeights.top(row);
    const qsizetype activity = m_content.activityCount();
    const qsizetype inActivity = row - completed;
    const int above =
        m_style.endGap + m_messageHeights.top(completed) + m_activityHeights.top(qMin(inActivity, activity));
    return inActivity <= activity ? above : above + m_messageHeights.height(completed);
}

int ConversationLayout::rowHeight(const ConversationItem &item) const
{
    return heights(item).height(indexOf(item));
}

qsizetype ConversationLayout::rowAt(int y) const
{
    if (m_content.count() == 0)
        return -1;
    const qsizetype completed = m_content.completedCount();
    const int completedBottom = top(completed);
    if (completed > 0 && (y < completedBottom || m_content.count() == completed))
        return qMin(m_messageHeights.rowAt(y - m_style.endGap), completed - 1);
    const qsizetype activity = m_content.activityCount();
    const int activityHeight = m_activityHeights.top(activity);
    if (activity > 0 && (y < completedBottom + activityHeight || !m_content.hasActiveResponse()))
        return completed + qMin(m_activityHeights.rowAt(y - completedBottom), activity - 1);
    return m_content.count() - 1;
}

void ConversationLayout::beginPass()
{
    m_documents.beginPass();
    m_passWork = 0;
    m_isPassComplete = true;
    m_isWaiting = false;
}

bool ConversationLayout::prepare(int top, int bottom)
{
    bool hasChanged = false;
    for (qsizetype row = qMax<qsizetype>(0, rowAt(top)); row < m_content.count(); ++row) {
        const int rowTop = this->top(row);
        if (rowTop >= bottom)
            break;
        hasChanged |= prepareRow(m_content.item(row), top - rowTop, bottom - rowTop);
    }
    return hasChanged;
}

bool ConversationLayout::prepareRow(const ConversationItem &item, int top, int bottom)
{
    const int heightBefore = rowHeight(item);
    if (!splitWithoutHold(item))
        return false;
    RowLayout &row = rowLayout(item);
    int y = rowFrame(item).top;
    for (qsizetype i = 0; i < row.segments.size() && y < bottom; ++i) {
        SegmentLayout &segment = row.segments[i];
        if (y + segment.height > top && mayLayOut(item, i)) {
            if (segment.isMeasured)
                document(item, i);
            else
                measure(item, i);
        }
        y += segment.height;
    }
    updateRowHeight(item);
    return rowHeight(item) != heightBefore;
}

void ConversationLayout::count(qsizetype work)
{
    m_passWork += work;
    m_dearestPass = qMax(m_dearestPass, m_passWork);
}

bool ConversationLayout::mayLayOut(const ConversationItem &item, qsizetype index)
{
    if (laidOut(item, index) == nullptr && m_passWork > 0) {
        const SegmentLayout &segment = rowLayout(item).segments.at(index);
        const QString text = m_texts.text(item, segment);
        const qsizetype cost = layoutCost(text);
        const bool dear = isDear(cost, text.size());
        const qsizetype work = workFor(cost, dear, segment.segment.kind, segment.lineEnds);
        m_isPassComplete &= m_passWork + work < passLimit;
    }
    return m_isPassComplete;
}

void ConversationLayout::measure(const ConversationItem &item, qsizetype index)
{
    QTextDocument &laidOut = document(item, index);
    const SegmentFrame frame = segmentFrame(item, index);
    SegmentLayout &segment = rowLayout(item).segments[index];
    segment.naturalWidth = qCeil(isUser(item) ? laidOut.textWidth() : laidOut.idealWidth());
    segment.height = frame.gap + frame.header + qCeil(laidOut.size().height()) + frame.footer;
    segment.isMeasured = true;
}

void ConversationLayout::updateRowHeight(const ConversationItem &item)
{
    const RowLayout &row = rowLayout(item);
    int height = 0;
    if (row.isSplit()) {
        const RowFrame frame = rowFrame(item);
        height = frame.top + frame.bottom;
        for (const SegmentLayout &segment : row.segments)
            height += segment.height;
    } else {
        height = m_frames.estimatedHeight(item);
    }
    heights(item).setHeight(indexOf(item), height);
}

const RowLayout &ConversationLayout::row(const ConversationItem &item)
{
    split(item);
    return rowLayout(item);
}

void ConversationLayout::split(const ConversationItem &item)
{
    RowLayout &row = rowLayout(item);
    if (row.isSplit())
        return;
    row = isMessage(item) ? rowOf(m_content.message(item)) : rowOf(m_content.text(item));
    estimate(item, 0);
}

bool ConversationLayout::splitWithoutHold(const ConversationItem &item)
{
    RowLayout &row = rowLayout(item);
    if (row.isSplit() || !isMessage(item) || !RowSplitter::isLong(m_content.message(item))) {
        split(item);
        return true;
    }
    if (std::optional<RowLayout> ready = m_splitter.take(item)) {
        row = std::move(*ready);
        estimate(item, 0);
        return true;
    }
    m_splitter.begin(item, m_content.message(item));
    m_isWaiting = true;
    return false;
}

void ConversationLayout::estimate(const ConversationItem &item, qsizetype from)
{
    RowLayout &row = rowLayout(item);
    for (qsizetype i = from; i < row.segments.size(); ++i)
        row.segments[i].height = m_frames.estimatedHeight(item, row, i);
    updateRowHeight(item);
}

qsizetype ConversationLayout::segmentAt(const ConversationItem &item, int y)
{
    const RowLayout &layout = row(item);
    int bottom = rowFrame(item).top;
    for (qsizetype i = 0; i < layout.segments.size(); ++i) {
        bottom += layout.segments.at(i).height;
        if (y < bottom)
            return i;
    }
    return layout.segments.size() - 1;
}

int ConversationLayout::segmentTop(const ConversationItem &item, qsizetype segment) const
{
    int y = rowFrame(item).top;
    const RowLayout &row = rowLayout(item);
    for (qsizetype i = 0; i < segment; ++i)
        y += row.segments.at(i).height;
    return y;
}

QTextDocument &ConversationLayout::document(const ConversationItem &item, qsizetype index)
{
    const SegmentLayout segment = rowLayout(item).segments.at(index);
    const SegmentKey key = SegmentKey::of(item, segment);
    SegmentDocuments::Entry *entry = m_documents.find(key);
    const bool isPlain = segment.segment.kind == TextSegment::Kind::plain;
    const QString text = isPlain ? m_texts.text(item, segment) : QString();
    const qsizetype length = isPlain ? text.size() : segment.segment.length;
    if (entry != nullptr && isPlain && length > entry->shownLength) {
        appendPlainText(*entry->document, text.sliced(entry->shownLength));
        count(layoutCost(QStringView(text).sliced(entry->shownLength)));
        entry->shownLength = length;
        entry->picture = {};
    } else if (entry == nullptr || length != entry->shownLength) {
        entry = &m_documents.insert(key, m_texts.makeDocument(item, rowLayout(item), index), length);
    }
    const int width = segmentFrame(item, index).width;
    if (entry->width != width) {
        entry->width = width;
        setDocumentWidth(*entry->document, width, isUser(item) ? DocumentFit::narrow : DocumentFit::full);
        const QString shown = entry->document->toRawText();
        const qsizetype cost = layoutCost(shown);
        entry->isDear = isDear(cost, shown.size());
        entry->picture = {};
        count(workFor(cost, entry->isDear, segment.segment.kind, entry->document->blockCount()));
    }
    return *entry->document;
}

QTextDocument *ConversationLayout::laidOut(const ConversationItem &item, qsizetype index) const
{
    const SegmentLayout &segment = rowLayout(item).segments.at(index);
    const SegmentDocuments::Entry *entry = m_documents.peek(SegmentKey::of(item, segment));
    return entry != nullptr && entry->width == segmentFrame(item, index).width ? entry->document.get()
                                                                               : nullptr;
}

QString ConversationLayout::plainText(const ConversationItem &item, qsizetype segment) const
{
    return m_texts.plainText(item, rowLayout(item), segment);
}

QString ConversationLayout::separatorAbove(const ConversationItem &item, qsizetype segment) const
{
    return m_texts.separatorAbove(item, rowLayout(item), segment);
}

QStringList ConversationLayout::links(const ConversationItem &item)
{
    constexpr qsizetype limit = 10;
    QStringList links;
    for (qsizetype i = 0; i < rowLayout(item).segments.size(); ++i) {
        const QTextDocument *document = laidOut(item, i);
        if (document == nullptr)
            continue;
        for (const QTextFormat &format : document->allFormats()) {
            const QString address = format.toCharFormat().anchorHref();
            if (!address.isEmpty() && !links.contains(address) && links.size() < limit)
                links += address;
        }
    }
    return links;
}

} // namespace morvane
