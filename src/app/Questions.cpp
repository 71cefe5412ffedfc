#include "app/Questions.h"

#include "base/Uuid.h"
#include "platform/Announcer.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

Questions::Questions(Announcer &announcer, QObject *parent) : QObject(parent), m_announcer(announcer) {}

Task<QString> Questions::askUserQuestion(QString question, QStringList options)
{
    co_await untilFree();
    const auto answer = m_requests.put({newUuid(), question, options});
    Q_EMIT pendingQuestionChanged();
    m_announcer.announce(u"Morvane asks: "_s + question);
    co_return co_await m_requests.answerTo(answer);
}

void Questions::resolveQuestion(const QString &answer)
{
    if (m_requests.answer(answer))
        Q_EMIT pendingQuestionChanged();
}

void Questions::leaveUnanswered()
{
    if (m_requests.close())
        Q_EMIT pendingQuestionChanged();
}

} // namespace morvane
