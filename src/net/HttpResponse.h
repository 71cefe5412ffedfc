#pragma once

#include "async/Task.h"
#include "net/HttpHeaders.h"
#include "net/LineReader.h"
#include "net/PieceReader.h"
#include "net/ResponseBody.h"

#include <QByteArray>
#include <QUrl>

namespace morvane {

/// The head of a response whose body is still to be read, once, by one of the three functions. Destroying it
/// before ends the transfer. Main thread.
class HttpResponse {
public:
    HttpResponse(ResponseHead head, ResponseBody body) : m_head(std::move(head)), m_body(std::move(body)) {}

    int status() const { return m_head.status; }
    /// 200 to 299.
    bool isSuccess() const { return m_head.status >= 200 && m_head.status <= 299; }
    const HttpHeaders &headers() const { return m_head.headers; }
    /// Where the response came from, after redirects.
    const QUrl &url() const { return m_head.url; }

    /// Gives the body to a reader. The head stays.
    LineReader lines();

    /// Gives the body to a reader that takes it in pieces. The head stays.
    PieceReader pieces();

    /// The whole body, decompressed. Throws TransportError (TooLarge above `maximumBytes`; the transfer stops
    /// there) or Cancelled. The head stays.
    Task<QByteArray> body(qint64 maximumBytes);

private:
    ResponseHead m_head;
    ResponseBody m_body;
};

} // namespace morvane
