#include "tools/SafeMath.h"

#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace morvane {
namespace {

using Kind = SafeMathError::Kind;
using Failure = std::unexpected<SafeMathError>;

bool isDigit(QChar unit)
{
    return unit >= u'0' && unit <= u'9';
}

bool isNumberPart(QChar unit)
{
    return isDigit(unit) || unit == u'.';
}

std::optional<double> parseNumber(QStringView run)
{
    std::string digits;
    digits.reserve(static_cast<std::size_t>(run.size()));
    for (const QChar unit : run)
        digits.push_back(unit.toLatin1());
    double value = 0;
    const char *const end = digits.data() + digits.size();
    const auto [parsedEnd, error] = std::from_chars(digits.data(), end, value, std::chars_format::fixed);
    if (error == std::errc::result_out_of_range) {
        // Too large has a digit other than 0 in front of the point; all else here is too near to zero.
        const std::size_t firstOther = digits.find_first_not_of('0');
        const bool belowOne = firstOther != std::string::npos && digits[firstOther] == '.';
        return belowOne && parsedEnd == end ? std::optional(0.0) : std::nullopt;
    }
    if (error != std::errc() || parsedEnd != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::string_view binarySymbol(QChar unit)
{
    switch (unit.unicode()) {
    case u'+':
        return "+";
    case u'-':
        return "-";
    case u'*':
        return "*";
    case u'/':
        return "/";
    default:
        return {};
    }
}

/// Shunting yard: takes tokens in reading order, gives them in the order in which a stack machine works.
class Postfix {
public:
    std::optional<SafeMathError> add(const MathToken &token)
    {
        if (const auto *const op = std::get_if<MathToken::Op>(&token.value)) {
            popFor(op->symbol);
            m_operators.push_back(token);
        } else if (std::holds_alternative<MathToken::LParen>(token.value)) {
            m_operators.push_back(token);
        } else if (std::holds_alternative<MathToken::RParen>(token.value)) {
            return closeParenthesis();
        } else {
            m_output.push_back(token);
        }
        return std::nullopt;
    }

    std::expected<std::vector<MathToken>, SafeMathError> finish()
    {
        while (!m_operators.empty()) {
            if (std::holds_alternative<MathToken::LParen>(m_operators.back().value))
                return Failure({Kind::malformed, {}});
            popToOutput();
        }
        return std::move(m_output);
    }

private:
    void popToOutput()
    {
        m_output.push_back(m_operators.back());
        m_operators.pop_back();
    }

    void popFor(std::string_view symbol)
    {
        const int current = SafeMath::precedence(symbol);
        while (!m_operators.empty()) {
            const auto *const top = std::get_if<MathToken::Op>(&m_operators.back().value);
            if (!top)
                return;
            const int precedence = SafeMath::precedence(top->symbol);
            if (symbol == "u-" ? precedence <= current : precedence < current)
                return;
            popToOutput();
        }
    }

    std::optional<SafeMathError> closeParenthesis()
    {
        while (!m_operators.empty()) {
            if (std::holds_alternative<MathToken::LParen>(m_operators.back().value)) {
                m_operators.pop_back();
                return std::nullopt;
            }
            popToOutput();
        }
        return SafeMathError{Kind::malformed, {}};
    }

    std::vector<MathToken> m_output;
    std::vector<MathToken> m_operators;
};

std::optional<SafeMathError> apply(std::string_view symbol, std::vector<double> &stack)
{
    if (stack.empty())
        return SafeMathError{Kind::malformed, {}};
    const double b = stack.back();
    if (symbol == "u-") {
        stack.back() = -b;
        return std::nullopt;
    }
    stack.pop_back();
    if (stack.empty())
        return SafeMathError{Kind::malformed, {}};
    double &a = stack.back();
    if (symbol == "+") {
        a += b;
    } else if (symbol == "-") {
        a -= b;
    } else if (symbol == "*") {
        a *= b;
    } else {
        if (b == 0)
            return SafeMathError{Kind::divisionByZero, {}};
        a /= b;
    }
    if (!std::isfinite(a))
        return SafeMathError{Kind::overflow, {}};
    return std::nullopt;
}

} // namespace

std::expected<std::vector<MathToken>, SafeMathError> SafeMath::tokenize(QStringView text)
{
    std::vector<MathToken> tokens;
    bool expectOperand = true;
    qsizetype position = 0;
    while (position < text.size()) {
        const QChar unit = text[position];
        if (unit == u' ' || unit == u'\t') {
            ++position;
        } else if (isNumberPart(unit)) {
            const auto runEnd = std::find_if_not(text.begin() + position, text.end(), isNumberPart);
            const QStringView run(text.begin() + position, runEnd);
            const std::optional<double> value = parseNumber(run);
            if (!value)
                return Failure({Kind::invalidToken, run.toString()});
            tokens.push_back({MathToken::Number{*value}});
            expectOperand = false;
            position += run.size();
        } else if (unit == u'(' || unit == u')') {
            expectOperand = unit == u'(';
            tokens.push_back(expectOperand ? MathToken{MathToken::LParen{}} : MathToken{MathToken::RParen{}});
            ++position;
        } else if (const std::string_view symbol = binarySymbol(unit); !symbol.empty()) {
            ++position;
            if (expectOperand && unit == u'-') {
                tokens.push_back({MathToken::Op{"u-"}});
            } else if (expectOperand && unit == u'+') {
                continue;
            } else if (unit != u'-' && position < text.size() && text[position] == unit) {
                return Failure({Kind::invalidToken, QString(2, unit)});
            } else {
                tokens.push_back({MathToken::Op{symbol}});
                expectOperand = true;
            }
        } else {
            const QStringView rest = text.sliced(position);
            return Failure({Kind::invalidToken, rest.first(characterOffset(rest, 1)).toString()});
        }
    }
    return tokens;
}

int SafeMath::precedence(std::string_view op)
{
    if (op == "+" || op == "-")
        return 1;
    if (op == "*" || op == "/")
        return 2;
    return op == "u-" ? 3 : 0;
}

std::expected<double, SafeMathError> SafeMath::evaluate(QStringView text)
{
    const auto tokens = tokenize(text);
    if (!tokens)
        return Failure(tokens.error());
    Postfix postfix;
    for (const MathToken &token : *tokens)
        if (auto error = postfix.add(token))
            return Failure(std::move(*error));
    const auto output = postfix.finish();
    if (!output)
        return Failure(output.error());

    std::vector<double> stack;
    for (const MathToken &token : *output) {
        if (const auto *const number = std::get_if<MathToken::Number>(&token.value)) {
            stack.push_back(number->value);
        } else if (const auto *const op = std::get_if<MathToken::Op>(&token.value)) {
            if (auto error = apply(op->symbol, stack))
                return Failure(std::move(*error));
        }
    }
    if (stack.size() != 1)
        return Failure({Kind::malformed, {}});
    if (!std::isfinite(stack.front()))
        return Failure({Kind::overflow, {}});
    return stack.front();
}

} // namespace morvane
