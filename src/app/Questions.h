#pragma once

#include "async/OneShot.h"
#include "async/Task.h"
#include "model/PendingQuestion.h"

#include <QObject>
#include <optional>

namespace morvane {

class Announcer;

/// Questions of the model to the user, one at a time. Main thread.
class Questions : public QObject {
    Q_OBJECT
public:
    explicit Questions(Announcer &announcer, QObject *parent = nullptr);

    /// Shows and announces the question and waits, without a time limit, for the answer. Cancellation does
    /// not end the wait.
    Task<QString> askUserQuestion(QString question, QStringList options);

    /// Answers the pending question, if any.
    void resolveQuestion(const QString &answer);

    const std::optional<PendingQuestion> &pendingQuestion() const { return m_pending; }

Q_SIGNALS:
    void pendingQuestionChanged();

private:
    Announcer &m_announcer;
    std::optional<PendingQuestion> m_pending;
    std::optional<OneShot<QString>> m_questionContinuation;
};

} // namespace morvane
