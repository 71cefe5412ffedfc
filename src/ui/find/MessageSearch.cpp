#include "ui/find/MessageSearch.h"

#include "ui/conversation/MessageParts.h"
#include "ui/markdown/SegmentText.h"

#include <QStringMatcher>
#include <algorithm>

namespace morvane {

namespace {

int occurrences(const QString &text, const QStringMatcher &matcher)
{
    int count = 0;
    const qsizetype length = matcher.pattern().size();
    for (qsizetype at = matcher.indexIn(text); at >= 0; at = matcher.indexIn(text, at + length))
        ++count;
    return count;
}

} // namespace

MessageSearch MessageSearch::run(const QList<ChatMessage> &messages, const QString &words,
                                 const std::atomic<bool> &isStopped)
{
    MessageSearch search;
    if (words.isEmpty())
        return search;
    for (qsizetype i = 0; i < messages.size() && !isStopped; ++i)
        search.addMessage(i, messages.at(i), words, isStopped);
    return search;
}

void MessageSearch::addMessage(qsizetype index, const ChatMessage &message, const QString &words,
                               const std::atomic<bool> &isStopped)
{
    const QStringMatcher matcher(words, Qt::CaseInsensitive);
    for (const RowPart part : messageParts(message)) {
        if (part == RowPart::responding)
            continue;
        const QString text = partText(message, part);
        QString references;
        for (const TextSegment &segment : partSegments(message, part, references)) {
            if (isStopped)
                return;
            if (const int count = occurrences(shownText(text, segment, references), matcher); count > 0)
                add({.message = index, .part = part, .from = segment.from, .occurrence = 0}, count);
        }
    }
}

void MessageSearch::add(const FoundText &first, int count)
{
    m_segments.push_back({.first = first, .count = count, .before = m_count});
    m_count += count;
}

FoundText MessageSearch::at(qsizetype index) const
{
    const auto next =
        std::upper_bound(m_segments.begin(), m_segments.end(), index,
                         [](qsizetype wanted, const Segment &segment) { return wanted < segment.before; });
    const Segment &segment = *std::prev(next);
    FoundText found = segment.first;
    found.occurrence = static_cast<int>(index - segment.before);
    return found;
}

qsizetype MessageSearch::firstFrom(qsizetype message) const
{
    const auto segment = std::lower_bound(
        m_segments.begin(), m_segments.end(), message,
        [](const Segment &segment, qsizetype wanted) { return segment.first.message < wanted; });
    return segment == m_segments.end() ? 0 : segment->before;
}

qsizetype MessageSearch::indexOf(const FoundText &found) const
{
    FoundText first = found;
    first.occurrence = 0;
    const auto segment = std::ranges::find(m_segments, first, &Segment::first);
    const bool isThere = segment != m_segments.end() && found.occurrence < segment->count;
    return isThere ? segment->before + found.occurrence : -1;
}

} // namespace morvane
