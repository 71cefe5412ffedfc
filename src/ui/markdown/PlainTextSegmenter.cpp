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

char32_t letterBefore(QStringView text, qsizetype at)
{
    const QChar last = text[at - 1];
    return last.isLowSurrogate() && at > 1 && text[at - 2].isHighSurrogate()
               ? QChar::surrogateToUcs4(text[at - 2], last)
               : last.unicode();
}

char32_t letterAt(QStringView text, qsizetype at)
{
    const QChar first = text[at];
    return first.isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate()
               ? QChar::surrogateToUcs4(first, text[at + 1])
               : first.unicode();
}

bool isRegionalIndicator(char32_t letter)
{
    return letter >= 0x1F1E6 && letter <= 0x1F1FF;
}

/// Letters whose neighbours on both sides must be known to tell where a character ends (Unicode Standard
/// Annex 29): format characters, jamo, regional indicators, letters of scripts with prefixed ones, halves of
/// pairs.
bool needsItsNeighbours(char32_t letter)
{
    const auto isIn = [letter](char32_t first, char32_t last) { return letter >= first && letter <= last; };
    return QChar::category(letter) == QChar::Other_Format || isIn(0x1100, 0x11FF) || isIn(0xA960, 0xA97F) ||
           isIn(0xD7B0, 0xDFFF) || isRegionalIndicator(letter) || letter == 0x0D4E || isIn(0x11000, 0x11FFF);
}

/// Whether the letter belongs to the character before it, or may do so.
bool mayContinue(char32_t letter)
{
    return QChar::isMark(letter) || (letter >= 0x1F3FB && letter <= 0x1F3FF) || letter == 0x0E33 ||
           letter == 0x0EB3 || letter == 0xFF9E || letter == 0xFF9F;
}

/// Whether a character surely ends there, told from the letters on both sides alone.
bool endsSurely(QStringView text, qsizetype at)
{
    const char32_t before = letterBefore(text, at);
    const char32_t after = letterAt(text, at);
    return before != U'\r' && !needsItsNeighbours(before) && !needsItsNeighbours(after) &&
           !mayContinue(after) && !(QChar::isMark(before) && QChar::isLetter(after));
}

/// A place between two characters, the last or one of the last within the first `limit` units; 0 where the
/// first is longer.
qsizetype characterEnd(QStringView text, qsizetype limit)
{
    limit -= limit > 1 && text[limit - 1].isHighSurrogate() ? 1 : 0;
    // ICU takes some 20 microseconds to begin, which is too long for each of a few thousand cuts.
    bool isAllMarks = true;
    for (qsizetype at = limit; at > std::max<qsizetype>(0, limit - longestCharacterUnits); --at) {
        if (at < text.size() && endsSurely(text, at))
            return at;
        isAllMarks = isAllMarks && QChar::isMark(letterBefore(text, at));
    }
    if (isAllMarks)
        return limit; // more than belong to one character
    // Where characters end shows within a few of them, but for flags, which are counted from the first.
    const qsizetype from = isRegionalIndicator(letterBefore(text, limit))
                               ? 0
                               : std::max<qsizetype>(0, limit - 2 * longestCharacterUnits);
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
