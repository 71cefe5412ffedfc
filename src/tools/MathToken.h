#pragma once

#include <string_view>
#include <variant>

namespace morvane {

/// One token of an arithmetic expression.
struct MathToken {
    struct Number {
        double value = 0;
        bool operator==(const Number &) const = default;
    };
    struct Op {
        std::string_view symbol; ///< "+", "-", "*", "/", or "u-" for the unary minus; a literal.
        bool operator==(const Op &) const = default;
    };
    struct LParen {
        bool operator==(const LParen &) const = default;
    };
    struct RParen {
        bool operator==(const RParen &) const = default;
    };

    std::variant<Number, Op, LParen, RParen> value;

    bool operator==(const MathToken &) const = default;
};

} // namespace morvane
