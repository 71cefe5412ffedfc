#pragma once

#include <QString>

namespace morvane {

/// Why an arithmetic expression has no value.
struct SafeMathError {
    enum class Kind { invalidToken, malformed, divisionByZero, overflow };

    Kind kind = Kind::malformed;
    QString token; ///< What was not understood; empty unless the kind is invalidToken.

    bool operator==(const SafeMathError &) const = default;

    /// The sentence for the model, without "Error:" and without a full stop.
    QString errorDescription() const;
};

} // namespace morvane
