#include "base/Text.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <unicode/ubrk.h>

namespace morvane {

namespace {

struct CloseIterator {
    void operator()(UBreakIterator *iterator) const { ubrk_close(iterator); }
};
using Boundaries = std::unique_ptr<UBreakIterator, CloseIterator>;

/// UTF-16 units; see Text.h.
constexpr qsizetype longestCharacter = longestCharacterUnits;

/// ICU addresses text with 32 bits; what is longer goes to it in pieces of this many UTF-16 units.
constexpr qsizetype largestPiece = std::numeric_limits<int32_t>::max() / 2;

Boundaries characterBoundaries(QStringView piece)
{
    UErrorCode status = U_ZERO_ERROR;
    Boundaries iterator(
        ubrk_open(UBRK_CHARACTER, "", piece.utf16(), static_cast<int32_t>(piece.size()), &status));
    return U_SUCCESS(status) ? std::move(iterator) : nullptr;
}

/// Length of the leading part in which every unit but a CR before LF is a character by itself. The last ASCII
/// unit before other text stays out, since what follows may combine with it.
qsizetype simplePrefix(QStringView text)
{
    const auto *const begin = text.utf16();
    const auto *const end = begin + text.size();
    constexpr std::ptrdiff_t block = 64;
    const auto *unit = begin;
    while (end - unit >= block) {
        char16_t seen = 0;
        for (std::ptrdiff_t i = 0; i < block; ++i)
            seen |= unit[i];
        if (seen > 0x7f)
            break;
        unit += block;
    }
    unit = std::find_if(unit, end, [](char16_t c) { return c > 0x7f; });
    if (unit == end || unit == begin)
        return unit - begin;
    // Nothing combines with a control character, and a LF must not be parted from its CR.
    return unit[-1] < 0x20 ? unit - begin : unit - begin - 1;
}

qsizetype lineEndPairs(QStringView ascii)
{
    const auto *const units = ascii.utf16();
    qsizetype pairs = 0;
    for (qsizetype i = 1; i < ascii.size(); ++i)
        pairs += (units[i - 1] == u'\r') & (units[i] == u'\n');
    return pairs;
}

/// Walks over at most `limit` characters; answers how many there were and where the last one ended.
struct Walk {
    qsizetype characters = 0;
    qsizetype offset = 0;
};

/// Length of the first character of `cluster` where that is too long to be one; never parts a surrogate pair.
qsizetype longestPart(QStringView cluster)
{
    if (cluster.size() <= longestCharacter)
        return cluster.size();
    return longestCharacter - (cluster[longestCharacter - 1].isHighSurrogate() ? 1 : 0);
}

/// Walks on over the clusters of `piece`, which begins where `walked` ends, as ICU finds them.
void walkClusters(QStringView piece, qsizetype limit, Walk &walked)
{
    const Boundaries boundaries = characterBoundaries(piece);
    if (!boundaries) { // Out of memory in ICU: units are the next best measure.
        const qsizetype units = std::min(limit - walked.characters, piece.size());
        walked.characters += units;
        walked.offset += units;
        return;
    }
    qsizetype at = 0;
    int32_t end = 0;
    while (walked.characters < limit && (end = ubrk_next(boundaries.get())) != UBRK_DONE) {
        while (walked.characters < limit && at < end) {
            at += longestPart(piece.sliced(at, end - at));
            ++walked.characters;
        }
    }
    walked.offset += at;
}

Walk walk(QStringView text, qsizetype limit)
{
    Walk walked;
    if (limit <= 0 || text.isEmpty())
        return walked;

    // Twice as many units as characters, and one more pair, surely hold them where all is ASCII.
    const QStringView head = limit < text.size() / 2 - 1 ? text.first(2 * limit + 2) : text;
    const qsizetype prefix = simplePrefix(head);
    const qsizetype pairs = lineEndPairs(text.first(prefix));
    if (prefix - pairs > limit) {
        const auto *const units = text.utf16();
        for (; walked.characters < limit; ++walked.characters) {
            const bool pair = units[walked.offset] == u'\r' && units[walked.offset + 1] == u'\n';
            walked.offset += pair ? 2 : 1;
        }
        return walked;
    }
    walked = {prefix - pairs, prefix};

    while (walked.characters < limit && walked.offset < text.size()) {
        // What is left of the limit cannot lie beyond this, however long the characters are; ICU would read a
        // cluster of millions of units to its end.
        const qsizetype wanted = std::min(limit - walked.characters, largestPiece / longestCharacter - 1);
        const qsizetype reach = std::min((wanted + 1) * longestCharacter, text.size() - walked.offset);
        walkClusters(text.sliced(walked.offset, reach), walked.characters + wanted, walked);
    }
    return walked;
}

bool isLineEnd(QChar unit)
{
    return (unit >= u'\n' && unit <= u'\r') || unit == u'\u0085' || unit == u'\u2028' || unit == u'\u2029';
}

} // namespace

qsizetype characterCount(QStringView text)
{
    return walk(text, std::numeric_limits<qsizetype>::max()).characters;
}

qsizetype characterOffset(QStringView text, qsizetype count)
{
    return text.size() <= count ? text.size() : walk(text, count).offset;
}

QString firstCharacters(const QString &text, qsizetype count)
{
    const qsizetype offset = characterOffset(text, count);
    return offset == text.size() ? text : text.first(offset);
}

QString trimmed(QStringView text)
{
    return text.trimmed().toString();
}

QString singleLine(QStringView text)
{
    QString line;
    line.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool pair = text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n';
        line += isLineEnd(text[i]) ? QChar(u' ') : text[i];
        i += pair ? 1 : 0;
    }
    return line;
}

QString flattened(QStringView text, qsizetype limit)
{
    // White space includes every line end, so that trimming first gives the same and the line has no end to
    // trim.
    const QStringView body = text.trimmed();
    limit = std::max<qsizetype>(limit, 0);
    const auto beginning = [&](qsizetype units) {
        return singleLine(body.first(std::min(units, body.size())));
    };
    // Few texts need more units than this; none needs more than the longest characters do.
    const qsizetype usual = limit * 4 + 64;
    QString line = beginning(usual);
    qsizetype offset = characterOffset(line, limit);
    // The last character of a part may be cut in two.
    if (usual < body.size() && offset > line.size() - longestCharacter) {
        line = beginning((limit + 2) * longestCharacter);
        offset = characterOffset(line, limit);
    }
    return offset == line.size() ? line : line.first(offset) + u'…';
}

} // namespace morvane
