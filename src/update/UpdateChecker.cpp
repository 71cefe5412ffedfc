#include "update/UpdateChecker.h"

#include "async/Cancelled.h"
#include "async/OffMain.h"
#include "async/Sleep.h"
#include "net/HttpClient.h"
#include "update/Log.h"
#include "update/UpdateCheckerError.h"

using namespace std::chrono_literals;

namespace morvane {

namespace {

constexpr int attempts = 2;
constexpr auto betweenAttempts = 1s;
constexpr auto requestTimeOut = 15s;
constexpr qint64 maximumManifestBytes = 1024 * 1024;

} // namespace

Task<UpdateInfo> UpdateChecker::fetchLatest()
{
    for (int attempt = 1;; ++attempt) {
        std::exception_ptr failure;
        try {
            co_return co_await fetchOnce();
        } catch (const Cancelled &) {
            throw;
        } catch (...) {
            failure = std::current_exception();
        }
        qCInfo(updateLog) << "attempt" << attempt << "of the check:" << kindOfFailure(failure);
        if (attempt == attempts)
            std::rethrow_exception(failure);
        co_await sleepFor(betweenAttempts);
    }
}

Task<UpdateInfo> UpdateChecker::fetchOnce()
{
    HttpRequest request;
    request.url = m_host.manifestURL();
    request.headers.set("Cache-Control", "no-cache");
    request.silenceLimit = requestTimeOut;
    request.encryption = EncryptionRule::kept;
    const FetchResult answer = co_await m_http.fetch(std::move(request), maximumManifestBytes);
    if (!answer.isSuccess())
        throw UpdateCheckerError::badResponse();
    const auto update = co_await runOffMain([body = answer.body] { return UpdateInfo::fromJson(body); });
    if (!update || !m_host.allows(update->url()))
        throw UpdateCheckerError::badResponse();
    co_return *update;
}

} // namespace morvane
