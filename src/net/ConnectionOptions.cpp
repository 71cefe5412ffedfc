#include "net/ConnectionOptions.h"

namespace morvane {

namespace {

/// Silence after which the system probes whether the other side is still there. In seconds.
constexpr long keepAliveAfter = 60;

/// Idle connections older than this are not used again. Servers close theirs after 60 seconds or more, most
/// of them, and what is sent at that very moment is lost: nobody can tell whether the server acted on it, so
/// that a request that changes something must not be repeated. In seconds.
constexpr long idleLimit = 50;

} // namespace

std::vector<NumberOption> connectionOptions(const HttpRequest &request)
{
    return {
        {CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS)},
        {CURLOPT_CONNECTTIMEOUT_MS,
         static_cast<long>(request.connectLimit.value_or(request.silenceLimit).count())},
        {CURLOPT_MAXAGE_CONN, idleLimit},
        {CURLOPT_TCP_KEEPALIVE, 1L},
        {CURLOPT_TCP_KEEPIDLE, keepAliveAfter},
    };
}

} // namespace morvane
