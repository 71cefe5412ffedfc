#pragma once

#include "async/TaskHandle.h"
#include "model/ChatMessage.h"
#include "model/ConversationMeta.h"

#include <QList>
#include <QObject>
#include <QUuid>
#include <optional>
#include <variant>

namespace morvane {

class ConversationStore;
class Scheduler;
class SettingsStore;

/// The saved conversations, and which of them is the current one. Files are read in the background, but a
/// conversation is the current one from the moment it is asked for; `phase` says how far it has come, and
/// what arrives for a conversation that is no longer wanted is dropped. Main thread.
class Conversations : public QObject {
    Q_OBJECT
public:
    enum class Renamed { no, yes };

    /// A conversation that was not saved yet.
    struct None {
        QString title; ///< What the first save writes.
    };
    /// The list is being read, and then the conversation that was open last.
    struct Restoring {
        std::optional<QUuid> last;
        TaskHandle<void> reading;
    };
    /// The file of the current conversation is being read.
    struct Opening {
        QUuid id;
        std::optional<QString> title; ///< Nothing as long as the list is not known.
        Renamed renamed;              ///< Whether the title is to be saved once the messages are there.
        TaskHandle<void> reading;
    };
    struct Open {
        QUuid id;
        QString title;
    };
    using Phase = std::variant<None, Restoring, Opening, Open>;

    /// All of them outlive the object; the scheduler is shut down before it goes.
    Conversations(Scheduler &scheduler, ConversationStore &store, SettingsStore &settings);

    /// Newest first as of the last reading; a conversation that is saved keeps its place until the next.
    const QList<ConversationMeta> &list() const { return m_list; }
    const Phase &phase() const { return m_phase; }
    /// Whether the messages of the current conversation are known. Until then none may be added or saved.
    bool isReady() const;
    /// The current conversation, also while it is being opened; nothing before its first save.
    std::optional<QUuid> currentID() const;
    QString currentTitle() const;
    /// Whether `id` is the current conversation, or the one that is about to be restored.
    bool isCurrent(QUuid id) const;

    /// Reads the list and the last conversation; once, at the start.
    void restore();
    /// Makes `id`, which is another, the current conversation and reads it. A file that cannot be read is an
    /// empty conversation.
    void open(QUuid id);
    /// Leaves the current conversation for one that is not saved yet.
    void begin();
    /// Deletes a conversation, and leaves it if it is the current one.
    void remove(QUuid id);
    /// The title of a conversation that is not saved yet.
    void setProvisionalTitle(const QString &title);
    /// Renames the current conversation, from the next save on. False if `id` is another.
    bool rename(QUuid id, const QString &title);
    /// Saves `messages` as the current conversation and gives it an identifier the first time. Does nothing
    /// without messages, or when the conversation is not ready.
    void save(const QList<ChatMessage> &messages);
    /// Reads the list anew, in the background.
    void reload();

Q_SIGNALS:
    // Of the list, after the change: rows `first` to `last`; `to` is the row where it stands now.
    void rowsInserted(qsizetype first, qsizetype last);
    void rowsRemoved(qsizetype first, qsizetype last);
    void rowMoved(qsizetype from, qsizetype to);
    void rowChanged(qsizetype row);
    /// Another conversation is the current one, or it has got its identifier.
    void currentChanged();
    /// The messages of the current conversation have arrived; none if its file cannot be read.
    void arrived(const QList<morvane::ChatMessage> &messages);
    /// The same, for a conversation that the user has opened.
    void opened();
    /// Restoring or opening has come to its end; the conversation is ready.
    void settled();

private:
    /// Whether a reading of the list is under way, and still worth something.
    enum class Reading { none, current, outdated };

    Task<void> readList();
    Task<void> readLast();
    Task<void> readOpening(QUuid id);
    void setPhase(Phase phase);
    void arrive(QUuid id, const QString &title, const QList<ChatMessage> &messages);
    void write(QUuid id, const QString &title, const QList<ChatMessage> &messages);
    void listChanges();
    void takeList(const QList<ConversationMeta> &listed);
    void removeAllBut(const QList<ConversationMeta> &listed);
    qsizetype rowOf(QUuid id, qsizetype from = 0) const;
    QString titleOf(QUuid id) const;

    Scheduler &m_scheduler;
    ConversationStore &m_store;
    SettingsStore &m_settings;
    QList<ConversationMeta> m_list;
    bool m_listKnown = false;
    Reading m_reading = Reading::none;
    Phase m_phase;
};

} // namespace morvane
