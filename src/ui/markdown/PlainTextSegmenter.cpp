#include "ui/markdown/PlainTextSegmenter.h"

#include "base/Text.h"
#include "ui/markdown/LayoutCost.h"

#include <algorithm>

namespace morvane {

namespace {

/// Length of the first `segmentLineLimit` lines of `text`, or of all of it if it has fewer.
qsizetype lineLimited(QStringView text)
{
    qsizetype lines = 0;
    const qsizetype first = text.indexOf(u'\n');
    for (qsizetype at = first; at >= 0 && at < text.size(); ++at)
        if (text[at] == u'\n' && ++lines == segmentLineLimit)
            return at + 1;
    return text.size();
}

/// As QChar::isSpace, which looks into its tables for whatever is not Latin.
bool isBlank(QChar unit)
{
    constexpr char16_t lastLatin = 0xff;
    constexpr char16_t firstOther = 0x1680;
    constexpr char16_t lastOther = 0x3000;
    const bool mayBe =
        unit.unicode() <= lastLatin || (unit.unicode() >= firstOther && unit.unicode() <= lastOther);
    return mayBe && unit.isSpace();
}

/// The last place between two characters within the first `limit` units; 0 where the first is longer.
qsizetype characterEnd(QStringView text, qsizetype limit)
{
    // Where characters end shows within a few of them.
    const qsizetype from = std::max<qsizetype>(0, limit - 2 * longestCharacterUnits);
    const QStringView around = text.sliced(from, std::min(text.size(), limit + longestCharacterUnits) - from);
    const qsizetype begun = characterCount(around.first(limit - from));
    const qsizetype end = from + characterOffset(around, begun);
    return end <= limit ? end : from + characterOffset(around, begun - 1);
}

} // namespace

qsizetype cutPosition(QStringView text, qsizetype limit)
{
    const QStringView head = text.first(limit);
    // Looking from the front is many times faster, and most long texts that are cut within have none.
    if (head.contains(u'\n'))
        return head.lastIndexOf(u'\n') + 1;
    // A blank far from the end would leave a nearly empty last line in the middle of a paragraph.
    const auto partsLineEnd = [text](qsizetype i) {
        return text[i - 1] == u'\r' && i < text.size() && text[i] == u'\n';
    };
    for (qsizetype i = limit; i > limit / 2; --i)
        if (isBlank(head.at(i - 1)) && !partsLineEnd(i))
            return i;
    if (const qsizetype end = characterEnd(text, limit); end > 0)
        return end;
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
        // No letter is looked at for more than one segment, but for those that cost next to nothing.
        const qsizetype affordable =
            affordableLength(rest.first(std::min(rest.size(), segmentLimit)), segmentLimit);
        qsizetype length = lineLimited(rest.first(affordable));
        const bool isWhole = length == rest.size() || rest[length - 1] == u'\n';
        if (!isWhole)
            length = cutPosition(rest, length);
        segments.append({.from = at, .length = length, .startsBlock = at == 0});
        at += length;
        if (at >= text.size())
            return firstChanged;
    }
}

} // namespace morvane
