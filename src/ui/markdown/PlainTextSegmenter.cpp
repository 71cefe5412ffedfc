#include "ui/markdown/PlainTextSegmenter.h"

namespace morvane {

namespace {

/// Index behind the last line of the first `segmentLineLimit`, or `limit` if there are fewer.
qsizetype lineLimited(QStringView text, qsizetype limit)
{
    qsizetype at = 0;
    for (qsizetype lines = 0; lines < segmentLineLimit; ++lines) {
        const qsizetype end = text.indexOf(u'\n', at);
        if (end < 0 || end >= limit)
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
        const qsizetype limit = qMin(rest.size(), segmentLimit);
        const qsizetype lines = lineLimited(rest, limit);
        qsizetype length = lines;
        if (lines == limit && rest.size() > segmentLimit)
            length = cutPosition(rest, segmentLimit);
        segments.append({.from = at, .length = length});
        at += length;
        if (at >= text.size())
            return firstChanged;
    }
}

} // namespace morvane
