#include "providers/RetryingRequest.h"

#include "async/CheckCancelled.h"
#include "async/Sleep.h"
#include "providers/AIServiceError.h"
#include "providers/DiscardBody.h"
#include "providers/Log.h"
#include "providers/RetryDelay.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr int maximumAttempts = 3;

bool isRetryable(int status)
{
    return status == 429 || (status >= 500 && status <= 599);
}

} // namespace

Task<HttpResponse> streamRequest(HttpClient *client, HttpRequest request)
{
    for (int attempt = 0; attempt < maximumAttempts; ++attempt) {
        HttpResponse response = co_await client->open(request);
        if (!isRetryable(response.status()) || attempt == maximumAttempts - 1)
            co_return response;
        const auto delay = retryDelay(response.headers().value("Retry-After"), attempt);
        qCInfo(providersLog) << "status" << response.status() << "at attempt" << attempt + 1 << "; again in"
                             << std::chrono::round<std::chrono::milliseconds>(delay).count() << "ms";
        co_await discardBody(response.lines());
        if (delay.count() > 0)
            co_await sleepFor(delay);
        else
            co_await checkCancelled();
    }
    throw AIServiceError(AIServiceError::Api{
        u"The AI provider was unreachable after several attempts. Try again in a moment."_s});
}

} // namespace morvane
