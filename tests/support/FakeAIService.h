#pragma once

#include "async/Clock.h"
#include "providers/AIService.h"

#include <QList>
#include <QStringList>
#include <deque>
#include <exception>
#include <functional>

namespace morvane {

/// A model whose turns a test writes down beforehand. Records every request.
class FakeAIService final : public AIService {
public:
    struct Turn {
        QStringList tokens;            ///< Given to onToken first, one by one.
        Clock::Duration pause{};       ///< Waited before each token.
        AITurnResult result;           ///< The turn's result, unless `error` is set.
        std::exception_ptr error;      ///< Thrown after the tokens.
        Clock::Duration silence{};     ///< Waited after the tokens, before the end.
        std::function<void()> atStart; ///< Called when the turn is asked for.
    };
    struct Request {
        QList<APIMessage> context;
        AIConfiguration config;
        bool gemini = false;
    };

    /// A turn that streams `text` as one token and calls no tools.
    static Turn answer(const QString &text);
    /// A turn that streams `text` and calls tools.
    static Turn calls(QList<AIToolCall> toolCalls, const QString &text = {});
    static Turn failure(std::exception_ptr error);

    void willTurn(Turn turn) { m_turns.push_back(std::move(turn)); }
    /// What a title request gets; without it, title requests fail.
    void willTitle(const QString &title) { m_title = title; }
    /// How long a title request takes; at once otherwise.
    void setTitleTime(Clock::Duration time) { m_titleTime = time; }

    const QList<Request> &requests() const { return m_requests; }
    const QList<Request> &titleRequests() const { return m_titleRequests; }

    Task<AITurnResult> runOpenAITurn(QList<APIMessage> context, AIConfiguration config,
                                     TokenCallback onToken) override;
    Task<AITurnResult> runGeminiTurn(QList<APIMessage> context, AIConfiguration config,
                                     TokenCallback onToken) override;

private:
    Task<AITurnResult> run(Request request, TokenCallback onToken);

    std::deque<Turn> m_turns;
    std::optional<QString> m_title;
    Clock::Duration m_titleTime{};
    QList<Request> m_requests;
    QList<Request> m_titleRequests;
};

/// A call of the tool `name` with arguments written as JSON.
AIToolCall toolCall(const QString &name, const char *arguments = "{}");

} // namespace morvane
