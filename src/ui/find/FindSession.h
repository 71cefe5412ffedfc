#pragma once

#include "async/Task.h"
#include "ui/find/MessageSearch.h"

#include <QObject>
#include <QPointer>
#include <memory>
#include <optional>
#include <variant>

namespace morvane {

class Scheduler;
class Transcript;

/// What is looked for in the open conversation, and which of the places is shown. Searches off the main
/// thread, and again whenever the messages change. Main thread.
class FindSession : public QObject {
    Q_OBJECT
public:
    /// Both must outlive the session.
    FindSession(Scheduler &scheduler, const Transcript &transcript, QObject *parent = nullptr);
    ~FindSession() override;

    /// Looks for other words; the first place at or behind `message` is shown. Without words nothing is
    /// looked for.
    void search(const QString &words, qsizetype message);
    /// Goes on to the next place, after the last to the first, and the other way round. Before the search has
    /// ended they do nothing.
    void next() { step(1); }
    void previous() { step(-1); }

    const QString &words() const { return m_words; }
    /// How many places there are, or nothing while that is not known.
    std::optional<qsizetype> count() const;
    /// Which of them is shown, counted from 0; -1 without one.
    qsizetype current() const;
    /// "3 of 17", "No matches", "Searching…"; empty without words.
    QString summary() const;

Q_SIGNALS:
    /// The summary is another.
    void changed();
    /// The user came to a place.
    void reached(const morvane::FoundText &found);
    /// The words stand nowhere.
    void nothingFound();

private:
    struct Idle {};
    struct Searching {
        std::shared_ptr<std::atomic<bool>> isStopped;
    };
    struct Done {
        MessageSearch search;
        qsizetype current = -1;
    };
    /// Where to go when the search has ended.
    struct Goal {
        qsizetype message = 0;          ///< To its first place or the next one behind it,
        std::optional<FoundText> shown; ///< or to stay where the user is,
        bool isRepeated = false;        ///< of which nothing is told, since only the messages changed.
    };

    void begin(const Goal &goal);
    void stop();
    void searchAgain();
    void step(int direction);
    void finish(MessageSearch search, const Goal &goal);
    static Task<void> searchOffMain(QPointer<FindSession> session, QList<ChatMessage> messages, QString words,
                                    std::shared_ptr<std::atomic<bool>> isStopped, Goal goal);

    Scheduler &m_scheduler;
    const Transcript &m_transcript;
    QString m_words;
    Goal m_goal;
    std::variant<Idle, Searching, Done> m_phase;
};

} // namespace morvane
