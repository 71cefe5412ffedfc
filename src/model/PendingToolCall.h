#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

/// An approval request, shown as a sheet while it waits for the user.
struct PendingToolCall {
    QUuid id;
    QString toolName;
    QString summary; ///< The phrase for the call, with its warning if it has one.
    bool destructive = false;

    bool operator==(const PendingToolCall &) const = default;
};

} // namespace morvane
