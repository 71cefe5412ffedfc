#pragma once

#include "net/HttpClientOptions.h"
#include "net/HttpRequest.h"

#include <QByteArrayView>
#include <QtGlobal>
#include <array>
#include <curl/curl.h>
#include <memory>

namespace morvane {

/// One libcurl transfer, set up for one request without its redirects. Network thread.
class CurlHandle {
public:
    enum class Receive { taken, pause, stop };

    /// Where a transfer delivers; called from within curl_multi_perform and curl_easy_pause.
    class Sink {
    public:
        virtual ~Sink() = default;
        /// One line of a response head or of a trailer, with its end. False ends the transfer.
        virtual bool receiveHeaderLine(QByteArrayView line) = 0;
        /// A part of the body, decompressed. Pause: it comes again after curl_easy_pause.
        virtual Receive receiveBody(QByteArrayView bytes) = 0;
        /// All bytes of bodies that have moved in both directions, as on the wire.
        virtual void noticeProgress(qint64 bytesMoved) = 0;
    };

    /// The request and `sink` must outlive it; the request's body is not copied. A request that changes
    /// something is never sent a second time, whatever becomes of its connection.
    CurlHandle(const HttpRequest &request, const HttpClientOptions &options, Sink &sink);
    CurlHandle(const CurlHandle &) = delete;
    CurlHandle &operator=(const CurlHandle &) = delete;

    CURL *get() const { return m_handle.get(); }

    /// What this result of libcurl means.
    TransportError error(CURLcode result) const;

private:
    struct EndHandle {
        void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
    };
    struct FreeList {
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    };

    void setConnection(const HttpRequest &request, const HttpClientOptions &options);
    void setMethod(const HttpRequest &request);
    void setBody(const HttpRequest &request);
    void setHeaders(const HttpRequest &request, const HttpClientOptions &options);
    void setCallbacks(Sink &sink);
    void addHeader(const QByteArray &line);

    std::array<char, CURL_ERROR_SIZE> m_errorText{};
    std::unique_ptr<curl_slist, FreeList> m_headers; ///< Used by the handle, so it goes after it.
    std::unique_ptr<CURL, EndHandle> m_handle;
};

} // namespace morvane
