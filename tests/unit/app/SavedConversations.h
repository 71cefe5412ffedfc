#pragma once

#include "support/AppFixture.h"

namespace morvane {

/// An application model on a folder with saved conversations.
class SavedConversations : public AppFixture {
protected:
    /// Saves a conversation behind the model's back.
    QUuid savedConversation(const QString &title, QList<ChatMessage> messages)
    {
        const QUuid id = QUuid::createUuid();
        store->save(id, title, std::move(messages));
        return id;
    }

    static ChatMessage message(Role role, const QString &text, bool streaming = false)
    {
        ChatMessage result;
        result.id = QUuid::createUuid();
        result.role = role;
        result.text = text;
        result.isStreaming = streaming;
        return result;
    }

    /// The texts of a conversation on disk; nothing if there is none.
    std::optional<QStringList> storedTexts(QUuid id)
    {
        const auto file = runTask(scheduler, store->load(id));
        if (!file)
            return std::nullopt;
        QStringList texts;
        for (const ChatMessage &message : file->messages)
            texts.append(message.text);
        return texts;
    }
};

} // namespace morvane
