#include "support/PageServer.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

QByteArray pathOf(const RawHttpRequest &request)
{
    const qsizetype query = request.target.indexOf('?');
    return query < 0 ? request.target : request.target.first(query);
}

} // namespace

PageServer::PageServer() : m_server([this](RawHttpConnection &connection) { serve(connection); }) {}

void PageServer::page(const QString &path, const QByteArray &html)
{
    HttpHeaders headers;
    headers.set("Content-Type", "text/html; charset=utf-8");
    answer(path, rawHttpResponse(200, html, headers));
}

void PageServer::answer(const QString &path, const QByteArray &response)
{
    const std::lock_guard lock(m_mutex);
    m_answers[path.toUtf8()] = response;
}

void PageServer::keepWaiting(const QString &path)
{
    answer(path, {});
}

void PageServer::closeAfter(const QString &path)
{
    const std::lock_guard lock(m_mutex);
    m_closing.insert(path.toUtf8());
}

QList<RawHttpRequest> PageServer::requests(const QString &path) const
{
    QList<RawHttpRequest> found;
    for (const RawHttpRequest &request : m_server.requests())
        if (pathOf(request) == path.toUtf8())
            found.append(request);
    return found;
}

void PageServer::serve(RawHttpConnection &connection)
{
    while (const auto request = connection.readRequest()) {
        QByteArray response = rawHttpResponse(404, "not here");
        bool closes = false;
        {
            const std::lock_guard lock(m_mutex);
            if (const auto known = m_answers.find(pathOf(*request)); known != m_answers.end())
                response = known->second;
            closes = m_closing.contains(pathOf(*request));
        }
        if (response.isEmpty()) {
            connection.waitUntilClosedByPeer();
            return;
        }
        if (!connection.send(response) || closes)
            return;
    }
}

} // namespace morvane
