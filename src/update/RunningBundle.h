#pragma once

#include <QString>
#include <optional>

namespace morvane {

/// Where the program that runs lies, as it was at its start: while an update is put in its place it moves.
struct RunningBundle {
    /// Within a bundle, below its folder.
    static constexpr auto programPlace = "Contents/MacOS/Morvane";

    QString path;   ///< The bundle's folder, "….app"; empty where the program is none.
    QString parent; ///< The folder that holds the bundle, or the program where there is no bundle.

    bool operator==(const RunningBundle &) const = default;

    /// By the real path of the program.
    static RunningBundle ofProgram(const QString &program);
};

} // namespace morvane
