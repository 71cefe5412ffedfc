#pragma once

#include "async/Cancelled.h"
#include "async/SystemClock.h"
#include "net/HttpClient.h"
#include "providers/AIServiceError.h"
#include "providers/HttpAIService.h"
#include "support/RunTask.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace morvane {

/// How a turn ended, and what it said on the way.
struct TurnOutcome {
    QStringList pieces;
    std::optional<AITurnResult> result;
    std::optional<AIServiceError> error;
    std::optional<TransportError::Kind> transportError;
    bool cancelled = false;

    QString text() const { return result ? result->text : QStringLiteral("(no result)"); }
    QString description() const { return error ? error->errorDescription() : QStringLiteral("(no error)"); }
    /// The error's payload if it is of this kind; a test failure and an empty one otherwise.
    template <class Reason> Reason reason() const
    {
        const auto *reason = error ? std::get_if<Reason>(&error->reason()) : nullptr;
        EXPECT_TRUE(reason) << "the turn did not end with this kind of error: " << qPrintable(description());
        return reason ? *reason : Reason{};
    }
};

/// A turn that is under way.
class RunningTurn {
public:
    RunningTurn(Scheduler &scheduler, HttpAIService &service, QList<APIMessage> context,
                AIConfiguration config)
        : m_outcome(std::make_shared<TurnOutcome>()),
          m_handle(scheduler.spawn(run(service, std::move(context), std::move(config), m_outcome)))
    {
    }

    TurnOutcome &outcome() { return *m_outcome; }
    bool done() const { return m_handle.done(); }
    void cancel() { m_handle.cancel(); }
    TurnOutcome wait()
    {
        EXPECT_TRUE(waitUntil([this] { return done(); })) << "the turn did not end";
        return *m_outcome;
    }

private:
    static Task<void> run(HttpAIService &service, QList<APIMessage> context, AIConfiguration config,
                          std::shared_ptr<TurnOutcome> outcome)
    {
        const auto onToken = [outcome](const QString &piece) { outcome->pieces.append(piece); };
        const bool gemini = config.provider == ProviderID::gemini;
        try {
            auto turn = gemini ? service.runGeminiTurn(std::move(context), std::move(config), onToken)
                               : service.runOpenAITurn(std::move(context), std::move(config), onToken);
            outcome->result = co_await std::move(turn);
        } catch (const AIServiceError &error) {
            outcome->error = error;
        } catch (const TransportError &error) {
            outcome->transportError = error.kind();
        } catch (const Cancelled &) {
            outcome->cancelled = true;
        }
    }

    std::shared_ptr<TurnOutcome> m_outcome;
    TaskHandle<void> m_handle;
};

/// Endpoints that all lie on one server.
inline Endpoints endpointsAt(const QString &origin)
{
    Endpoints endpoints;
    for (QString *host : {&endpoints.gemini, &endpoints.openrouter, &endpoints.groq, &endpoints.ollama,
                          &endpoints.openai, &endpoints.zen})
        *host = origin;
    return endpoints;
}

inline AIConfiguration configurationFor(ProviderID provider)
{
    AIConfiguration config;
    config.provider = provider;
    config.apiKey = QStringLiteral("key");
    config.model = QStringLiteral("scripted");
    return config;
}

inline QList<APIMessage> contextSaying(const QString &text)
{
    return {APIMessage{APIMessage::User{text, {}}}};
}

} // namespace morvane
