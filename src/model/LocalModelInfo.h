#pragma once

#include <QString>
#include <optional>

namespace morvane {

/// The state of the local model as the windows show it.
struct LocalModelInfo {
    bool running = false; ///< The server answers and the selected model is installed.
    bool installing = false;
    QString progress;
    std::optional<double> progressFraction; ///< 0 to 1; absent means indeterminate.
    QString error;                          ///< The last failure, empty if none.

    bool operator==(const LocalModelInfo &) const = default;
};

} // namespace morvane
