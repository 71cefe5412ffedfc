#include "app/Questions.h"

#include "base/Uuid.h"
#include "platform/Announcer.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

Questions::Questions(Announcer &announcer, QObject *parent) : QObject(parent), m_announcer(announcer) {}

Task<QString> Questions::askUserQuestion(QString question, QStringList options)
{
    m_pending = PendingQuestion{newUuid(), question, options};
    const OneShot<QString> answer;
    m_questionContinuation = answer;
    Q_EMIT pendingQuestionChanged();
    m_announcer.announce(u"Morvane asks: "_s + question);
    co_return co_await answer.wait();
}

void Questions::resolveQuestion(const QString &answer)
{
    auto continuation = std::exchange(m_questionContinuation, std::nullopt);
    if (!continuation)
        return;
    m_pending.reset();
    Q_EMIT pendingQuestionChanged();
    continuation->resume(answer);
}

} // namespace morvane
