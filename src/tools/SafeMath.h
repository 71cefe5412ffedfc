#pragma once

#include "tools/MathToken.h"
#include "tools/SafeMathError.h"

#include <QStringView>
#include <expected>
#include <string_view>
#include <vector>

namespace morvane {

/// Arithmetic over doubles with +, -, *, / and parentheses, so that a sum from a model never goes through a
/// shell or a general expression engine. Time and memory are linear in the text; no recursion. Any thread.
class SafeMath {
public:
    /// Blanks and tabs part tokens, nothing else may stand between them. A digit run with points is one
    /// number; a "-" where an operand is expected is unary, a "+" there is dropped; "++", "**" and "//" are
    /// refused by name, "--" is a minus before a unary minus.
    static std::expected<std::vector<MathToken>, SafeMathError> tokenize(QStringView text);

    /// 1 for "+" and "-", 2 for "*" and "/", 3 for "u-", 0 for anything else.
    static int precedence(std::string_view op);

    /// The value of the expression. Binary operators are left-associative, the unary minus binds tightest.
    /// Every intermediate result must be finite.
    static std::expected<double, SafeMathError> evaluate(QStringView text);
};

} // namespace morvane
