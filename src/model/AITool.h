#pragma once

#include "base/SharedJsonObject.h"

#include <QList>
#include <QString>
#include <optional>

namespace morvane {

/// One tool declaration offered to the model.
struct AITool {
    QString name;
    QString description;
    SharedJsonObject schema; ///< JSON Schema object with `type`, `properties` and `required`.

    bool operator==(const AITool &) const = default;
};

/// A tool call as the model asked for it.
struct AIToolCall {
    QString name;
    SharedJsonObject arguments;
    std::optional<QString> id; ///< The provider's own call id; the agent loop gives calls its own.
    std::optional<QString> thoughtSignature;

    bool operator==(const AIToolCall &) const = default;
};

/// The result of one model turn.
struct AITurnResult {
    QString text;
    QList<AIToolCall> toolCalls; ///< In the model's order.

    bool operator==(const AITurnResult &) const = default;
};

} // namespace morvane
