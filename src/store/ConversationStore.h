#pragma once

#include "async/Task.h"
#include "model/ChatMessage.h"
#include "model/ConversationMeta.h"

#include <QList>
#include <QString>
#include <QUuid>
#include <memory>
#include <optional>

namespace morvane {

/// The content of a conversation file.
struct ConversationFile {
    QUuid id;
    QString title;
    double createdAt = 0; ///< Seconds since 2001-01-01T00:00:00Z, as updatedAt.
    double updatedAt = 0;
    QList<ChatMessage> messages;

    bool operator==(const ConversationFile &) const = default;
};

/// Keeps each conversation in a JSON file of its own, `{directory}/{ID}.json`.
///
/// The disk is touched on one worker thread only, in the order of the calls, so that a list or a load sees
/// every save made before it and the main thread never waits. No operation reports a failure; damaged files
/// are skipped and stay on disk. The destructor finishes every write that is still waiting. Main thread.
class ConversationStore {
public:
    /// Creates the folder (0700) if it can; a failure shows as an empty list and saves without effect.
    explicit ConversationStore(QString directory);
    ~ConversationStore();

    /// Every readable conversation, newest first (stable).
    Task<QList<ConversationMeta>> list();

    /// Queues an atomic, durable write and returns at once what the list will show.
    ConversationMeta save(QUuid id, QString title, QList<ChatMessage> messages);

    /// Queues the removal of a conversation; a missing one is no failure.
    void remove(QUuid id);

    /// The conversation in `{id}.json`, or nothing if it is absent or cannot be decoded.
    Task<std::optional<ConversationFile>> load(QUuid id);

private:
    class Worker;
    std::unique_ptr<Worker> m_worker;
};

} // namespace morvane
