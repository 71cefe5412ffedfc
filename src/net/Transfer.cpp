#include "net/Transfer.h"

#include "net/CurlError.h"
#include "net/Redirect.h"

#include <utility>

namespace morvane {

namespace {

/// A redirect's own body is read up to here, so that the connection can be used again; a longer one is not
/// worth the time. In bytes.
constexpr qint64 maximumRedirectBody = 64 * 1024;

} // namespace

Transfer::Transfer(quint64 id, HttpRequest request, std::shared_ptr<ResponseChannel> channel,
                   const HttpClientOptions &options)
    : m_id(id), m_request(std::move(request)), m_channel(std::move(channel)), m_options(options),
      m_lastActivity(Clock::now())
{
}

void Transfer::beginHop()
{
    if (m_nextRequest) {
        m_request = std::move(*m_nextRequest);
        m_nextRequest.reset();
        ++m_redirects;
    }
    m_head = {};
    m_headerBytes = 0;
    m_discarded = 0;
    m_bytesMoved = 0;
    m_lastActivity = Clock::now();
    m_handle = std::make_unique<CurlHandle>(m_request, m_options, static_cast<CurlHandle::Sink &>(*this));
    curl_easy_setopt(m_handle->get(), CURLOPT_PRIVATE, this);
}

Transfer::Next Transfer::endHop(CURLcode result)
{
    if (m_failure) {
        m_channel->finish(m_failure);
        return Next::nothing;
    }
    if (m_nextRequest)
        return Next::anotherHop;
    if (result != CURLE_OK)
        m_channel->finish(m_handle->error(result));
    else
        m_channel->finish(std::nullopt);
    return Next::nothing;
}

void Transfer::resume()
{
    if (!m_paused)
        return;
    m_paused = false;
    m_lastActivity = Clock::now();
    // Delivers what was held back at once, and may thereby pause again.
    curl_easy_pause(m_handle->get(), CURLPAUSE_CONT);
}

void Transfer::fail(const TransportError &error)
{
    m_channel->finish(error);
}

Transfer::Clock::time_point Transfer::silenceDeadline() const
{
    return m_paused ? Clock::time_point::max() : m_lastActivity + m_request.silenceLimit;
}

bool Transfer::receiveHeaderLine(QByteArrayView line)
{
    m_lastActivity = Clock::now();
    m_headerBytes += line.size();
    if (m_headerBytes > m_request.maximumHeaderBytes)
        return stopWith(TransportError::Kind::tooLarge);
    if (m_head.isComplete())
        return true; // a trailer
    m_head.addLine(line);
    return m_head.isComplete() ? finishHead() : true;
}

bool Transfer::finishHead()
{
    auto next = redirected(m_request, m_head.status(), m_head.headers());
    if (!next) {
        m_channel->setHead({m_head.status(), m_head.headers(), m_request.url});
        return true;
    }
    if (m_redirects == maximumRedirects)
        return stopWith(TransportError::Kind::tooManyRedirects);
    if (next->problem())
        return stopWith(TransportError::Kind::invalidUrl);
    m_nextRequest = std::move(next);
    return true;
}

CurlHandle::Receive Transfer::receiveBody(QByteArrayView bytes)
{
    m_lastActivity = Clock::now();
    if (m_nextRequest)
        return discardRedirectBody(bytes.size());
    switch (m_channel->append(bytes)) {
    case ResponseChannel::Append::taken:
        return CurlHandle::Receive::taken;
    case ResponseChannel::Append::full:
        m_paused = true;
        return CurlHandle::Receive::pause;
    case ResponseChannel::Append::refused:
        break;
    }
    stopWith(TransportError::Kind::tooLarge);
    return CurlHandle::Receive::stop;
}

void Transfer::noticeProgress(qint64 bytesMoved)
{
    if (bytesMoved == m_bytesMoved)
        return;
    m_bytesMoved = bytesMoved;
    m_lastActivity = Clock::now();
}

bool Transfer::stopWith(TransportError::Kind kind)
{
    m_failure = TransportError(kind);
    return false;
}

CurlHandle::Receive Transfer::discardRedirectBody(qsizetype size)
{
    m_discarded += size;
    return m_discarded <= maximumRedirectBody ? CurlHandle::Receive::taken : CurlHandle::Receive::stop;
}

} // namespace morvane
