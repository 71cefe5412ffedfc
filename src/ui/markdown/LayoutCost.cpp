#include "ui/markdown/LayoutCost.h"

#include <algorithm>

namespace morvane {

namespace {

constexpr char16_t firstMark = 0x300;
constexpr int markCost = 5;
constexpr int emojiCost = 8;
constexpr int otherCost = 2;

int costOf(QChar unit)
{
    if (unit.unicode() < firstMark)
        return 1;
    if (unit.isSurrogate() || unit.unicode() == 0x200d)
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
    for (const QChar unit : text)
        cost += costOf(unit);
    return cost;
}

qsizetype affordableLength(QStringView text, qsizetype budget)
{
    qsizetype at = 0;
    for (qsizetype cost = 0; at < text.size(); ++at) {
        cost += costOf(text[at]);
        if (cost > budget)
            break;
    }
    return std::max(at, std::min<qsizetype>(1, text.size()));
}

} // namespace morvane
