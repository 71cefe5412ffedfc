#pragma once

#include "support/RawHttpServer.h"

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <map>
#include <mutex>
#include <set>

namespace morvane {

/// A small web site on loopback, whose pages a test writes.
class PageServer {
public:
    PageServer();

    /// An HTML page, shown under this path.
    void page(const QString &path, const QByteArray &html);
    /// Whole bytes of an answer.
    void answer(const QString &path, const QByteArray &response);
    /// Connections to this path are taken, and answered when there is an answer.
    void keepWaiting(const QString &path);

    /// Connections to this path stay open behind its answer, whatever that promises.
    void stayOpenAfter(const QString &path);
    /// Connections to this path end with its answer, whatever that promises.
    void closeAfter(const QString &path);

    QUrl url(const QString &path) const { return m_server.url(path); }
    /// The requests for a path so far, the query left out.
    QList<RawHttpRequest> requests(const QString &path) const;

private:
    void serve(RawHttpConnection &connection);
    bool contains(const std::set<QByteArray> &paths, const QByteArray &path) const;

    mutable std::mutex m_mutex;
    std::map<QByteArray, QByteArray> m_answers; ///< Empty for those that wait.
    std::set<QByteArray> m_closing;
    std::set<QByteArray> m_staying;
    RawHttpServer m_server;
};

} // namespace morvane
