#pragma once

#include <QString>
#include <QUuid>

namespace morvane {

/// What the list of conversations shows of one conversation.
struct ConversationMeta {
    QUuid id;
    QString title;        ///< "Untitled" when the stored title is empty.
    double updatedAt = 0; ///< Seconds since 2001-01-01T00:00:00Z.
    qsizetype messageCount = 0;

    bool operator==(const ConversationMeta &) const = default;
};

} // namespace morvane
