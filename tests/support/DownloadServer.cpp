#include "support/DownloadServer.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using Fault = DownloadServer::Fault;

/// The first byte of "bytes=N-"; nothing without a range.
std::optional<qint64> firstByte(const RawHttpRequest &request)
{
    const QByteArray range = request.headers.value("Range").value_or(QByteArray());
    if (!range.startsWith("bytes=") || !range.endsWith('-'))
        return std::nullopt;
    return range.sliced(6).chopped(1).toLongLong();
}

} // namespace

DownloadServer::DownloadServer(quint16 port)
    : m_server([this](RawHttpConnection &connection) { serve(connection); }, port)
{
}

QString DownloadServer::origin() const
{
    return u"http://127.0.0.1:%1"_s.arg(m_server.port());
}

void DownloadServer::setFile(const QString &path, File file)
{
    const std::lock_guard lock(m_mutex);
    m_files.insert(path.toUtf8(), std::move(file));
}

void DownloadServer::setFaults(QList<Fault> faults)
{
    const std::lock_guard lock(m_mutex);
    m_faults = std::move(faults);
}

void DownloadServer::serve(RawHttpConnection &connection)
{
    while (const auto request = connection.readRequest())
        if (!answer(connection, *request))
            return;
}

bool DownloadServer::answer(RawHttpConnection &connection, const RawHttpRequest &request)
{
    Fault fault;
    std::optional<File> file;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_faults.isEmpty())
            fault = m_faults.takeFirst();
        if (m_files.contains(request.target))
            file = m_files.value(request.target);
    }
    if (fault.kind == Fault::Kind::status)
        return connection.send(rawHttpResponse(static_cast<int>(fault.bytes), "no"));
    if (fault.kind == Fault::Kind::redirect)
        return connection.send(rawHttpResponse(302, {}, {{"Location", fault.target}}));
    if (!file)
        return connection.send(rawHttpResponse(404, "not here"));

    HttpHeaders headers;
    const QByteArray validator = file->entityTag.isEmpty() ? file->lastModified : file->entityTag;
    if (!file->entityTag.isEmpty())
        headers.set("ETag", file->entityTag);
    if (!file->lastModified.isEmpty())
        headers.set("Last-Modified", file->lastModified);
    if (fault.kind == Fault::Kind::encoded)
        headers.set("Content-Encoding", "x-test");

    auto first = firstByte(request);
    if (first && request.headers.value("If-Range").value_or(validator) != validator &&
        fault.kind != Fault::Kind::otherTag)
        first.reset();
    if (fault.kind == Fault::Kind::wholeInstead)
        first.reset();
    const qint64 size = file->content.size();
    if (first && *first >= size)
        return connection.send(
            rawHttpResponse(416, {}, {{"Content-Range", "bytes */" + QByteArray::number(size)}}));
    if (first && fault.kind == Fault::Kind::otherRange)
        ++*first;
    const QByteArray body = file->content.sliced(first.value_or(0));
    if (first)
        headers.set("Content-Range", "bytes " + QByteArray::number(*first) + '-' +
                                         QByteArray::number(size - 1) + '/' + QByteArray::number(size));
    if (fault.kind == Fault::Kind::withoutLength) {
        headers.set("Transfer-Encoding", "chunked");
        return connection.send(rawHttpHead(200, headers)) && connection.sendChunk(body) &&
               connection.send("0\r\n\r\n");
    }
    headers.set("Content-Length", QByteArray::number(body.size()));
    if (!connection.send(rawHttpHead(first ? 206 : 200, headers)))
        return false;
    if (fault.kind == Fault::Kind::cutOff || fault.kind == Fault::Kind::stall) {
        connection.send(QByteArrayView(body).first(std::min<qint64>(fault.bytes, body.size())));
        if (fault.kind == Fault::Kind::stall)
            connection.waitUntilClosedByPeer();
        return false;
    }
    return connection.send(body);
}

} // namespace morvane
