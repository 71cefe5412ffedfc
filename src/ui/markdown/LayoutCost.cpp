#include "ui/markdown/LayoutCost.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <unicode/uchar.h>

namespace morvane {

namespace {

constexpr char16_t firstMark = 0x300;
constexpr quint8 plainCost = 1;
constexpr quint8 markCost = 5;
constexpr quint8 otherCost = 2;
/// The toolkit decodes the picture of a colour emoji anew each time that it shapes or draws it.
constexpr quint8 emojiCost = 80;

/// Letters of two scripts side by side are two runs, each of which is shaped by itself.
constexpr quint8 scriptChangeCost = 6;

/// The block of the plane behind the first in which all emoji stand that are not in the first.
constexpr char32_t firstEmoji = 0x1f000;
constexpr char32_t lastEmoji = 0x1ffff;

bool isEmoji(char32_t character)
{
    constexpr char32_t firstSymbol = 0x2000;
    constexpr char32_t lastBasicSymbol = 0x32ff;
    constexpr char32_t keycap = 0x20e3;
    if (character < firstSymbol || (character > lastBasicSymbol && character <= 0xffff))
        return false;
    return character == keycap || u_hasBinaryProperty(static_cast<UChar32>(character), UCHAR_EMOJI);
}

/// Of a letter, roughly: the same for scripts that are shaped as one; 0 for what belongs to any.
quint8 scriptOf(QChar letter)
{
    constexpr char16_t firstLatin = 0x41;
    constexpr char16_t lastLatin = 0x2ff;
    constexpr char16_t firstSymbol = 0x2000;
    constexpr char16_t lastSymbol = 0x303f;
    constexpr char16_t firstForm = 0xfe00;
    const char16_t unit = letter.unicode();
    if (unit < firstLatin || letter.isSurrogate() || letter.isMark() ||
        (unit >= firstSymbol && unit <= lastSymbol) || unit >= firstForm)
        return 0;
    if (unit <= lastLatin)
        return 1;
    return unit > lastSymbol ? 2 : static_cast<quint8>(3 + unit / 0x80);
}

/// What each character costs. A message of megabytes is looked at in one go, and a look at a property takes
/// several times as long as one into a table.
struct Costs {
    Costs()
    {
        basic.fill(otherCost);
        std::fill_n(basic.begin(), firstMark, plainCost);
        for (char32_t unit = firstMark; unit < basic.size(); ++unit)
            if (isEmoji(unit))
                basic[unit] = emojiCost;
            else if (QChar(unit).isMark())
                basic[unit] = markCost;
        for (char32_t unit = 0; unit < scripts.size(); ++unit)
            scripts[unit] = scriptOf(QChar(unit));
        for (char32_t character = firstEmoji; character <= lastEmoji; ++character)
            pairs[character - firstEmoji] = isEmoji(character) ? emojiCost : otherCost;
    }

    quint8 seam(QChar before, QChar after) const
    {
        const quint8 script = scripts[after.unicode()];
        const quint8 last = scripts[before.unicode()];
        return script != last && script != 0 && last != 0 ? scriptChangeCost : 0;
    }

    /// Of the unit at this place, with its seam to the one before; the half of a pair that comes second costs
    /// like a letter.
    qsizetype at(QStringView text, qsizetype place) const
    {
        const QChar unit = text[place];
        if (place > 0 && !unit.isSurrogate())
            return basic[unit.unicode()] + seam(text[place - 1], unit);
        if (!unit.isHighSurrogate() || place + 1 == text.size() || !text[place + 1].isLowSurrogate())
            return basic[unit.unicode()];
        const char32_t character = QChar::surrogateToUcs4(unit, text[place + 1]);
        return character >= firstEmoji && character <= lastEmoji ? pairs[character - firstEmoji] : otherCost;
    }

    std::array<quint8, 0x10000> basic{};
    std::array<quint8, 0x10000> scripts{};
    std::array<quint8, lastEmoji - firstEmoji + 1> pairs{};
};

const Costs &costs()
{
    static const Costs costs;
    return costs;
}

/// Whether all of it costs as little as usual letters; may take a text for dearer that has but accents.
bool isPlain(QStringView text)
{
    constexpr qsizetype step = 256; // at once, by the processor's wide instructions
    for (qsizetype at = 0; at < text.size(); at += step) {
        const QStringView part = text.sliced(at, std::min(step, text.size() - at));
        const auto bits = std::accumulate(part.begin(), part.end(), 0u,
                                          [](unsigned all, QChar unit) { return all | unit.unicode(); });
        if (bits >= firstMark)
            return false;
    }
    return true;
}

} // namespace

qsizetype seamCost(QChar before, QChar after)
{
    return before.unicode() < firstMark && after.unicode() < firstMark ? 0 : costs().seam(before, after);
}

qsizetype layoutCost(QStringView text)
{
    if (isPlain(text))
        return text.size();
    const Costs &known = costs();
    qsizetype cost = 0;
    for (qsizetype at = 0; at < text.size(); ++at)
        cost += known.at(text, at);
    return cost;
}

qsizetype affordableLength(QStringView text, qsizetype budget)
{
    const QStringView plain = text.first(std::min(text.size(), budget));
    if (isPlain(plain))
        return std::max(plain.size(), std::min<qsizetype>(1, text.size()));
    const Costs &known = costs();
    qsizetype at = 0;
    for (qsizetype cost = 0; at < text.size(); ++at) {
        cost += known.at(text, at);
        if (cost > budget)
            break;
    }
    return std::max(at, std::min<qsizetype>(1, text.size()));
}

} // namespace morvane
