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

void PageServer::stayOpenAfter(const QString &path)
{
    const std::lock_guard lock(m_mutex);
    m_staying.insert(path.toUtf8());
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
        const QByteArray path = pathOf(*request);
        QByteArray response;
        const auto isAnswered = [&] {
            const std::lock_guard lock(m_mutex);
            const auto known = m_answers.find(path);
            response = known == m_answers.end() ? rawHttpResponse(404, "not here") : known->second;
            return !response.isEmpty();
        };
        if (!connection.waitUntil(isAnswered) || !connection.send(response) || contains(m_closing, path))
            return;
        if (contains(m_staying, path)) {
            connection.waitUntilClosedByPeer();
            return;
        }
    }
}

bool PageServer::contains(const std::set<QByteArray> &paths, const QByteArray &path) const
{
    const std::lock_guard lock(m_mutex);
    return paths.contains(path);
}

} // namespace morvane
