#include "net/HttpResponse.h"

#include "net/ResponseWait.h"

#include <utility>

namespace morvane {

namespace {

Task<QByteArray> wholeBody(ResponseBody body, qint64 maximumBytes)
{
    body.readWhole(maximumBytes);
    co_await ResponseWait(body, ResponseChannel::Until::end);
    co_return body.takeWhole();
}

} // namespace

LineReader HttpResponse::lines()
{
    m_body.readLines();
    return LineReader(std::move(m_body));
}

PieceReader HttpResponse::pieces()
{
    m_body.readPieces();
    return PieceReader(std::move(m_body));
}

Task<QByteArray> HttpResponse::body(qint64 maximumBytes)
{
    return wholeBody(std::move(m_body), maximumBytes);
}

} // namespace morvane
