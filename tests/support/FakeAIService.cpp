#include "support/FakeAIService.h"

#include "async/Sleep.h"
#include "providers/AIServiceError.h"

#include <boost/json/parse.hpp>

using namespace Qt::StringLiterals;

namespace morvane {

AIToolCall toolCall(const QString &name, const char *arguments)
{
    return {name, boost::json::parse(arguments).as_object(), std::nullopt, std::nullopt};
}

FakeAIService::Turn FakeAIService::answer(const QString &text)
{
    Turn turn;
    turn.tokens = {text};
    turn.result.text = text;
    return turn;
}

FakeAIService::Turn FakeAIService::calls(QList<AIToolCall> toolCalls, const QString &text)
{
    Turn turn;
    if (!text.isEmpty())
        turn.tokens = {text};
    turn.result = {text, std::move(toolCalls)};
    return turn;
}

FakeAIService::Turn FakeAIService::failure(std::exception_ptr error)
{
    Turn turn;
    turn.error = std::move(error);
    return turn;
}

Task<AITurnResult> FakeAIService::runOpenAITurn(QList<APIMessage> context, AIConfiguration config,
                                                TokenCallback onToken)
{
    return run({std::move(context), std::move(config), false}, std::move(onToken));
}

Task<AITurnResult> FakeAIService::runGeminiTurn(QList<APIMessage> context, AIConfiguration config,
                                                TokenCallback onToken)
{
    return run({std::move(context), std::move(config), true}, std::move(onToken));
}

Task<AITurnResult> FakeAIService::run(Request request, TokenCallback onToken)
{
    if (request.config.systemPrompt.startsWith("Generate a very short title"_L1)) {
        m_titleRequests.append(request);
        if (m_titleTime.count() > 0)
            co_await sleepFor(m_titleTime);
        if (!m_title)
            throw AIServiceError(AIServiceError::Api{u"no title today"_s});
        co_return AITurnResult{*m_title, {}};
    }
    m_requests.append(request);
    if (m_turns.empty())
        throw AIServiceError(AIServiceError::Api{u"the test wrote down no further turn"_s});
    const Turn turn = std::move(m_turns.front());
    m_turns.pop_front();
    if (turn.atStart)
        turn.atStart();
    for (const QString &token : turn.tokens) {
        if (turn.pause.count() > 0)
            co_await sleepFor(turn.pause);
        onToken(token);
    }
    if (turn.silence.count() > 0)
        co_await sleepFor(turn.silence);
    if (turn.error)
        std::rethrow_exception(turn.error);
    co_return turn.result;
}

} // namespace morvane
