#pragma once

#include <QString>
#include <variant>

namespace morvane {

/// How far the installation of an update is.
struct UpdateInstallPhase {
    struct Idle {};
    struct Downloading {
        double fraction = 0; ///< From 0 to 1; 0 while the size is not known.
    };
    struct Verifying {};
    struct Installing {};
    /// Nothing leads out of it but a new start of the program.
    struct Failed {
        QString text;
    };

    std::variant<Idle, Downloading, Verifying, Installing, Failed> state;
};

} // namespace morvane
