#pragma once

#include <QString>

namespace morvane {

/// Which version of the program runs.
struct ProgramVersion {
    QString version = QStringLiteral("0");
    qint64 build = 0;

    bool operator==(const ProgramVersion &) const = default;
};

} // namespace morvane
