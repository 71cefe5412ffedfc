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
    std::array<char, 32> text; // The longest shortest form, "-1.7976931348623157e+308", has 24 characters.
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    return QString::fromLatin1(text.data(), result.ptr - text.data());
}

} // namespace morvane
