#pragma once

#include "async/Task.h"
#include "model/ConversationMeta.h"
#include "store/ConversationFile.h"

#include <QList>
#include <QString>
#include <QThreadPool>
#include <QUuid>
#include <memory>
#include <optional>

namespace morvane {

class ConversationFiles;

/// Keeps each conversation in a JSON file of its own, `{folder}/{ID}.json`.
///
/// The disk is touched on one thread of the store's own, in the order of the calls, so that a list or a load
/// sees every save made before it and the main thread never waits. No operation reports a failure; damaged
/// files are passed over and stay on disk. The destructor finishes every write that is still waiting. Main
/// thread.
class ConversationStore {
public:
    /// Creates the folder (0700) if it can; a failure shows as an empty list and saves without effect.
    explicit ConversationStore(QString folder);
    ~ConversationStore();

    /// Every readable conversation, newest first (stable).
    Task<QList<ConversationMeta>> list();

    /// Queues an atomic, durable write and returns at once what the list will show.
    ConversationMeta save(QUuid id, QString title, QList<ChatMessage> messages);

    /// Queues the removal of a conversation; a missing one is no failure.
    void remove(QUuid id);

    /// The conversation in `{id}.json`, or nothing if it is absent or cannot be decoded.
    Task<std::optional<ConversationFile>> load(QUuid id);

    /// Whether all that was asked for is done, and the answers are on their way.
    bool isIdle() const { return m_disk.activeThreadCount() == 0; }

private:
    std::unique_ptr<ConversationFiles> m_files; ///< Used by the thread of `m_disk` alone.
    QThreadPool m_disk;
};

} // namespace morvane
