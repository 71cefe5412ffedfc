#include "tools/Calculator.h"

#include "base/Text.h"
#include "tools/SafeMath.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

bool isArithmetic(const QString &expression)
{
    bool hasDigit = false;
    for (const QChar unit : expression)
        if (unit >= u'0' && unit <= u'9')
            hasDigit = true;
        else if (!unit.isSpace() && !QStringView(u".+-*/()").contains(unit))
            return false;
    return hasDigit;
}

} // namespace

QString Calculator::calculate(const QString &expression)
{
    const QString text = trimmed(expression);
    if (text.isEmpty())
        return u"Error: empty expression."_s;
    if (!isArithmetic(text))
        return u"Error: only numbers and the operators +, -, *, /, (, ) and . are supported."_s;
    const auto value = SafeMath::evaluate(text);
    if (!value)
        return u"Error: "_s + value.error().errorDescription();
    return u"The result is "_s + formatNumber(*value) + u'.';
}

QString Calculator::formatNumber(double value)
{
    // Below this every whole number is exact, in a double and in 64 bits.
    constexpr double wholeNumberBound = 1e15;
    if (value == std::round(value) && std::abs(value) < wholeNumberBound)
        return QString::number(static_cast<qint64>(value));
    // Smaller numbers are written with an exponent; this one and those up to it as a person writes them down.
    constexpr double smallestPlain = 1e-6;
    const bool isPlainFraction = std::abs(value) >= smallestPlain && std::abs(value) < 1;
    std::array<char, 32> text; // The longest ones have 25 characters: "-0.0000012345678901234567".
    char *const end = text.data() + text.size();
    const auto result = isPlainFraction ? std::to_chars(text.data(), end, value, std::chars_format::fixed)
                                        : std::to_chars(text.data(), end, value);
    return QString::fromLatin1(text.data(), result.ptr - text.data());
}

} // namespace morvane
