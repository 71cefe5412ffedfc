#pragma once

#include "async/Task.h"
#include "net/FetchResult.h"
#include "net/HttpClientOptions.h"
#include "net/HttpRequest.h"
#include "net/HttpResponse.h"

#include <memory>

namespace morvane {

class NetworkThread;

/// Speaks HTTP on one network thread of its own, which starts with the first request. Connections are kept
/// and used again; loopback hosts are never asked through a proxy, others as the environment says
/// (`http_proxy`, `https_proxy`, `all_proxy`, `no_proxy`). No cookies, no cache. Main thread.
class HttpClient {
public:
    explicit HttpClient(HttpClientOptions options = {});
    /// Closes every connection and joins the thread. Tasks that still wait get TransportError::ClientClosed.
    ~HttpClient();
    HttpClient(const HttpClient &) = delete;
    HttpClient &operator=(const HttpClient &) = delete;

    /// Sends the request and gives the response as soon as its status and headers are there; every status is
    /// a response. Throws TransportError, or Cancelled; cancelling closes the connection at once.
    Task<HttpResponse> open(HttpRequest request);

    /// Sends the request and gives the response with its whole, decompressed body. Throws as open() does, and
    /// TransportError::TooLarge when the body is above `maximumBytes`.
    Task<FetchResult> fetch(HttpRequest request, qint64 maximumBytes);

private:
    std::shared_ptr<NetworkThread> m_network;
};

} // namespace morvane
