#pragma once

#include <QString>
#include <QStringView>
#include <optional>

namespace morvane {

/// How far a model's download is.
struct PullProgress {
    QString label;
    double fraction = 0; ///< 0 to 1.

    bool operator==(const PullProgress &) const = default;
};

/// Reads a line of the program's own progress, such as "pulling 6a0746a1ec1a: 42% ▕██ ▏ 1.9 GB/4.7 GB";
/// nothing for a line without a percentage. Takes time in proportion to the line's length.
std::optional<PullProgress> parsePullProgress(QStringView line);

} // namespace morvane
