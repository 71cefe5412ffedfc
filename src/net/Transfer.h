#pragma once

#include "net/CurlHandle.h"
#include "net/HttpClientOptions.h"
#include "net/HttpRequest.h"
#include "net/ResponseChannel.h"
#include "net/ResponseHeadParser.h"

#include <QtGlobal>
#include <chrono>
#include <memory>
#include <optional>

namespace morvane {

/// One request on the network thread, through all its redirects: each hop is a libcurl transfer of its own,
/// so that what goes to another origin is decided here. Network thread, but for the constructor.
class Transfer final : private CurlHandle::Sink {
public:
    using Clock = std::chrono::steady_clock;
    enum class Next { anotherHop, nothing };

    /// Follows as many redirects as browsers do.
    static constexpr int maximumRedirects = 20;

    /// `options` must outlive it.
    Transfer(quint64 id, HttpRequest request, std::shared_ptr<ResponseChannel> channel,
             const HttpClientOptions &options);

    quint64 id() const { return m_id; }
    CURL *handle() const { return m_handle->get(); }

    /// Makes the handle of the next request to be sent.
    void beginHop();
    /// The handle has ended. Tells the channel, unless another hop follows.
    Next endHop(CURLcode result);

    /// The channel has room again.
    void resume();
    void fail(const TransportError &error);

    /// When the transfer has been silent for too long, unless something moves before.
    Clock::time_point silenceDeadline() const;

private:
    bool receiveHeaderLine(QByteArrayView line) override;
    CurlHandle::Receive receiveBody(QByteArrayView bytes) override;
    void noticeProgress(qint64 bytesMoved) override;

    bool finishHead();
    bool stopWith(TransportError::Kind kind);
    CurlHandle::Receive discardRedirectBody(qsizetype size);

    quint64 m_id;
    HttpRequest m_request; ///< Of the current hop.
    std::shared_ptr<ResponseChannel> m_channel;
    const HttpClientOptions &m_options;
    std::unique_ptr<CurlHandle> m_handle;
    ResponseHeadParser m_head;
    qsizetype m_headerBytes = 0;
    int m_redirects = 0;
    qint64 m_discarded = 0;
    std::optional<HttpRequest> m_nextRequest; ///< Set once a redirect is to be followed.
    std::optional<TransportError> m_failure;  ///< Why we ended the hop ourselves.
    Clock::time_point m_lastActivity;
    qint64 m_bytesMoved = 0;
    bool m_paused = false;
};

} // namespace morvane
