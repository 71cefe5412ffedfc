#include "app/TurnRunner.h"

#include "async/CheckCancelled.h"
#include "async/CurrentContext.h"
#include "async/Race.h"
#include "async/Sleep.h"
#include "providers/AIServiceError.h"

#include <chrono>
#include <memory>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {

namespace {

/// When text last arrived. Request and watchdog both run on the main thread, so it needs no lock.
struct ActivityClock {
    Clock::TimePoint lastPing;
};

/// How long a turn may be silent. A local model takes long to load.
struct StallLimits {
    std::chrono::seconds grace;
    std::chrono::seconds idle;
};

StallLimits stallLimits(ProviderID provider)
{
    return provider == ProviderID::ollama ? StallLimits{120s, 240s} : StallLimits{60s, 120s};
}

/// Never returns a value: throws when no text has arrived for too long, or when the request has ended.
Task<AITurnResult> watchdog(std::shared_ptr<const ActivityClock> activity, StallLimits limits)
{
    const Clock &clock = (co_await currentContext()).scheduler->clock();
    const Clock::TimePoint start = clock.now();
    for (;;) {
        co_await sleepFor(1s);
        const Clock::TimePoint now = clock.now();
        if (now - start > limits.grace && now - activity->lastPing > limits.idle) {
            throw AIServiceError(AIServiceError::Api{u"The model stopped responding. Try again, choose a "
                                                     "smaller model, or use a faster provider."_s});
        }
    }
}

} // namespace

Task<AITurnResult> TurnRunner::runTurn(QList<APIMessage> context, AIConfiguration config,
                                       AIService::TokenCallback onToken)
{
    co_await checkCancelled();
    const Clock &clock = (co_await currentContext()).scheduler->clock();
    const auto activity = std::make_shared<ActivityClock>(ActivityClock{clock.now()});
    const ProviderID provider = config.provider;
    auto pinging = [activity, &clock, onToken = std::move(onToken)](const QString &token) {
        activity->lastPing = clock.now();
        onToken(token);
    };
    Task<AITurnResult> request =
        provider == ProviderID::gemini
            ? m_service.runGeminiTurn(std::move(context), std::move(config), std::move(pinging))
            : m_service.runOpenAITurn(std::move(context), std::move(config), std::move(pinging));
    co_return co_await race(std::move(request), watchdog(activity, stallLimits(provider)));
}

} // namespace morvane
