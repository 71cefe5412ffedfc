#include "ui/controls/ReadableText.h"

#include <algorithm>
#include <numeric>

namespace morvane {
namespace {

/// Without a look into the toolkit's tables and without a branch, so that the compiler takes many at once.
constexpr bool isUnreadable(char16_t unit)
{
    const bool isControl = (unit < 0x20) & (unit != u'\n') & (unit != u'\t');
    const bool isUpperControl = static_cast<char16_t>(unit - 0x7F) <= 0x9F - 0x7F;
    const bool reorders = (static_cast<char16_t>(unit - 0x202A) <= 0x202E - 0x202A) |
                          (static_cast<char16_t>(unit - 0x2066) <= 0x2069 - 0x2066);
    return isControl | isUpperControl | reorders;
}

} // namespace

QString readableText(QString text)
{
    const auto isAny = [](bool any, QChar unit) { return any | isUnreadable(unit.unicode()); };
    if (!std::accumulate(text.cbegin(), text.cend(), false, isAny))
        return text;
    std::replace_if(
        text.begin(), text.end(), [](QChar unit) { return isUnreadable(unit.unicode()); },
        QChar(QChar::ReplacementCharacter));
    return text;
}

} // namespace morvane
