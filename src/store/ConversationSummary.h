#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

/// What is known of a conversation file without keeping its messages.
struct ConversationSummary {
    QUuid id;
    QString title;        ///< As stored, also when empty.
    double createdAt = 0; ///< Seconds since 2001-01-01T00:00:00Z, as updatedAt.
    double updatedAt = 0;
    qsizetype messageCount = 0;

    bool operator==(const ConversationSummary &) const = default;
};

} // namespace morvane
