#pragma once

#include <QHash>
#include <QtGlobal>

namespace morvane {

/// One row of the conversation view. It keeps its identity while rows are added around it.
struct ConversationItem {
    enum class Kind { message, activityHeader, activityStep };

    Kind kind = Kind::message;
    qsizetype index = 0; ///< Into the messages or the steps; 0 for the header.

    bool operator==(const ConversationItem &) const = default;
};

inline size_t qHash(const ConversationItem &item, size_t seed = 0)
{
    return qHashMulti(seed, static_cast<int>(item.kind), item.index);
}

} // namespace morvane
