#include "ui/markdown/PlainTextSegmenter.h"

#include "ui/markdown/LayoutCost.h"

namespace morvane {

namespace {

/// Index behind the last line of the first `segmentLineLimit`, or `limit` if there are fewer.
qsizetype lineLimited(QStringView text, qsizetype limit)
{
    const QStringView head = text.first(limit);
    qsizetype at = 0;
    for (qsizetype lines = 0; lines < segmentLineLimit; ++lines) {
        const qsizetype end = head.indexOf(u'\n', at);
        if (end < 0)
            return limit;
        at = end + 1;
    }
    return at;
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
        const qsizetype limit = affordableLength(rest, segmentLimit);
        const qsizetype lines = lineLimited(rest, limit);
        qsizetype length = lines;
        if (lines == limit && rest.size() > limit)
            length = cutPosition(rest, limit);
        segments.append({.from = at, .length = length, .startsBlock = at == 0});
        at += length;
        if (at >= text.size())
            return firstChanged;
    }
}

} // namespace morvane
