#include "ui/markdown/PlainTextSegmenter.h"

#include "ui/markdown/LayoutCost.h"

#include <algorithm>

namespace morvane {

namespace {

/// Length of the first `segmentLineLimit` lines of `text`, or `segmentLimit` if that is less.
qsizetype lineLimited(QStringView text)
{
    const QStringView head = text.first(std::min(text.size(), segmentLimit));
    qsizetype lines = 0;
    for (qsizetype at = 0; at < head.size(); ++at)
        if (head[at] == u'\n' && ++lines == segmentLineLimit)
            return at + 1;
    return head.size();
}

} // namespace

qsizetype cutPosition(QStringView text, qsizetype limit)
{
    const QStringView head = text.first(limit);
    if (const qsizetype lineEnd = head.lastIndexOf(u'\n'); lineEnd >= 0)
        return lineEnd + 1;
    // A blank far from the end would leave a nearly empty last line in the middle of a paragraph.
    for (qsizetype i = limit; i > limit / 2; --i)
        if (head.at(i - 1).isSpace())
            return i;
    const bool splitsPair = limit > 1 && head.back().isHighSurrogate();
    return splitsPair ? limit - 1 : limit;
}

qsizetype extendPlainSegments(QList<TextSegment> &segments, QStringView text)
{
    qsizetype at = 0;
    if (!segments.isEmpty()) {
        at = segments.last().from;
        segments.removeLast();
    }
    const qsizetype firstChanged = segments.size();
    while (true) {
        const QStringView rest = text.sliced(at);
        // Lines first: a text of nothing but line ends must not be looked at again and again.
        const qsizetype lines = lineLimited(rest);
        qsizetype length = affordableLength(rest.first(lines), segmentLimit);
        const bool isWhole = length == rest.size() || (length == lines && rest[lines - 1] == u'\n');
        if (!isWhole)
            length = cutPosition(rest, length);
        segments.append({.from = at, .length = length, .startsBlock = at == 0});
        at += length;
        if (at >= text.size())
            return firstChanged;
    }
}

} // namespace morvane
