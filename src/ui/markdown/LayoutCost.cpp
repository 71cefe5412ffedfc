#include "ui/markdown/LayoutCost.h"

#include <algorithm>
#include <unicode/uchar.h>

namespace morvane {

namespace {

constexpr char16_t firstMark = 0x300;
constexpr int markCost = 5;
constexpr int otherCost = 2;
/// The toolkit decodes the picture of a colour emoji anew each time that it shapes or draws it.
constexpr int emojiCost = 80;

bool isEmoji(char32_t character)
{
    constexpr char32_t firstSymbol = 0x2000;
    constexpr char32_t lastBasicSymbol = 0x32ff;
    constexpr char32_t keycap = 0x20e3;
    if (character < firstSymbol || (character > lastBasicSymbol && character <= 0xffff))
        return false;
    return character == keycap || u_hasBinaryProperty(static_cast<UChar32>(character), UCHAR_EMOJI);
}

int costAt(QStringView text, qsizetype at)
{
    const QChar unit = text[at];
    if (unit.unicode() < firstMark)
        return 1;
    const bool isPair = unit.isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
    const char32_t character = isPair ? QChar::surrogateToUcs4(unit, text[at + 1]) : unit.unicode();
    if (isEmoji(character))
        return emojiCost;
    return unit.isMark() ? markCost : otherCost;
}

} // namespace

qsizetype layoutCost(QStringView text)
{
    const bool isPlain =
        std::none_of(text.begin(), text.end(), [](QChar unit) { return unit.unicode() >= firstMark; });
    if (isPlain)
        return text.size();
    qsizetype cost = 0;
    for (qsizetype at = 0; at < text.size(); ++at)
        cost += costAt(text, at);
    return cost;
}

qsizetype affordableLength(QStringView text, qsizetype budget)
{
    qsizetype at = 0;
    for (qsizetype cost = 0; at < text.size(); ++at) {
        cost += costAt(text, at);
        if (cost > budget)
            break;
    }
    return std::max(at, std::min<qsizetype>(1, text.size()));
}

} // namespace morvane
