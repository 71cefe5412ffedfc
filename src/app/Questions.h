#pragma once

#include "app/PendingRequest.h"
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

    /// Waits until no question is pending.
    Task<void> untilFree() { return m_requests.untilFree(); }

    /// Shows and announces the question, behind one that is pending, and waits, without a time limit, for the
    /// answer. Cancellation does not end the wait, but leaveUnanswered does.
    Task<QString> askUserQuestion(QString question, QStringList options);

    /// Answers the pending question, if any.
    void resolveQuestion(const QString &answer);

    /// Ends every wait for the user, now and later, with Cancelled: the program ends.
    void leaveUnanswered();

    const std::optional<PendingQuestion> &pendingQuestion() const { return m_requests.current(); }

Q_SIGNALS:
    void pendingQuestionChanged();

private:
    Announcer &m_announcer;
    PendingRequest<PendingQuestion, QString> m_requests;
};

} // namespace morvane
