#pragma once

#include "async/Task.h"
#include "update/UpdateHost.h"
#include "update/UpdateInfo.h"

namespace morvane {

class HttpClient;

/// Asks the update host what the newest version is. Main thread.
class UpdateChecker {
public:
    /// `http` outlives the checker.
    UpdateChecker(HttpClient &http, UpdateHost host) : m_http(http), m_host(std::move(host)) {}

    /// The newest manifest. Asks twice at most, a second apart, and throws what the last attempt ended with:
    /// UpdateCheckerError, TransportError or Cancelled.
    Task<UpdateInfo> fetchLatest();

private:
    Task<UpdateInfo> fetchOnce();

    HttpClient &m_http;
    const UpdateHost m_host;
};

} // namespace morvane
