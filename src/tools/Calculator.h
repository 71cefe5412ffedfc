#pragma once

#include <QString>

namespace morvane {

/// The calculator tool. Any thread.
class Calculator {
public:
    /// The sentence for the model: the result, or what is wrong with the expression.
    static QString calculate(const QString &expression);

    /// A whole number below 1e15 in magnitude without a point, anything else as the shortest text that reads
    /// back as the same double ("0.5", "1e+16"). Independent of the locale.
    static QString formatNumber(double value);
};

} // namespace morvane
