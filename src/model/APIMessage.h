#pragma once

#include "base/SharedJsonObject.h"
#include "model/ChatAttachment.h"

#include <QList>
#include <QString>
#include <optional>
#include <variant>

namespace morvane {

/// A provider-neutral entry of the working context: what the model sees. Never stored on disk.
struct APIMessage {
    struct User {
        QString text;
        QList<ChatAttachment> attachments;
        bool operator==(const User &) const = default;
    };
    /// Text of a turn that also called tools.
    struct Assistant {
        QString text;
        bool operator==(const Assistant &) const = default;
    };
    /// One tool call of the model.
    struct FunctionCall {
        QString id;
        QString name;
        SharedJsonObject arguments;
        std::optional<QString> thoughtSignature;
        bool operator==(const FunctionCall &) const = default;
    };
    /// The result of the call with the same id.
    struct FunctionResponse {
        QString id;
        QString name;
        QString content;
        bool operator==(const FunctionResponse &) const = default;
    };

    std::variant<User, Assistant, FunctionCall, FunctionResponse> entry;

    bool operator==(const APIMessage &) const = default;
};

} // namespace morvane
