#pragma once

#include <QDateTime>
#include <QString>
#include <QUuid>

namespace morvane {

/// One line of the activity log.
struct ActivityStep {
    enum class Kind { info, tool, success, error };

    QUuid id;
    QString text;
    QString whole; ///< What the line was made of, where that is more than the line tells; otherwise empty.
    Kind kind = Kind::info;
    QDateTime date;

    bool operator==(const ActivityStep &) const = default;
};

} // namespace morvane
