#include "net/HttpClient.h"

#include "net/NetworkThread.h"
#include "net/ResponseWait.h"

#include <utility>

namespace morvane {

namespace {

ResponseBody begin(NetworkThread &network, HttpRequest request)
{
    if (auto problem = request.problem())
        throw TransportError(std::move(*problem));
    return network.start(std::move(request));
}

Task<HttpResponse> openWith(std::shared_ptr<NetworkThread> network, HttpRequest request)
{
    ResponseBody body = begin(*network, std::move(request));
    co_await ResponseWait(body, ResponseChannel::Until::head);
    ResponseHead head = body.takeHead();
    co_return HttpResponse(std::move(head), std::move(body));
}

Task<FetchResult> fetchWith(std::shared_ptr<NetworkThread> network, HttpRequest request, qint64 maximumBytes)
{
    ResponseBody body = begin(*network, std::move(request));
    body.readWhole(maximumBytes);
    co_await ResponseWait(body, ResponseChannel::Until::end);
    QByteArray bytes = body.takeWhole();
    ResponseHead head = body.takeHead();
    co_return FetchResult{head.status, std::move(head.headers), std::move(head.url), std::move(bytes)};
}

} // namespace

HttpClient::HttpClient(HttpClientOptions options)
    : m_network(std::make_shared<NetworkThread>(std::move(options)))
{
}

HttpClient::~HttpClient()
{
    m_network->stop();
}

Task<HttpResponse> HttpClient::open(HttpRequest request)
{
    return openWith(m_network, std::move(request));
}

Task<FetchResult> HttpClient::fetch(HttpRequest request, qint64 maximumBytes)
{
    return fetchWith(m_network, std::move(request), maximumBytes);
}

} // namespace morvane
