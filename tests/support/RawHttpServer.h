#pragma once

#include "support/RawHttpConnection.h"
#include "support/RawHttpRequest.h"

#include <QList>
#include <QString>
#include <QUrl>
#include <QtGlobal>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace morvane {

/// A loopback server for tests that sends exactly the bytes that a script tells it to, however hostile: odd
/// segments, stalls, resets, truncated bodies. Every connection runs the script on a thread of its own.
class RawHttpServer {
public:
    using Script = std::function<void(RawHttpConnection &)>;
    using Answer = std::function<QByteArray(const RawHttpRequest &)>;

    /// On a port that is free where none is given.
    explicit RawHttpServer(Script script, quint16 port = 0);
    /// Wakes and ends every script.
    ~RawHttpServer();
    RawHttpServer(const RawHttpServer &) = delete;
    RawHttpServer &operator=(const RawHttpServer &) = delete;

    /// A script that answers every request of a connection with the bytes that `answer` gives.
    static Script answering(Answer answer);

    quint16 port() const { return m_port; }
    /// An http URL of this server.
    QUrl url(const QString &pathAndQuery = QStringLiteral("/")) const;

    /// @name What has happened so far. Any thread.
    ///@{
    QList<RawHttpRequest> requests() const;
    int acceptedConnections() const { return m_accepted; }
    int openConnections() const { return m_open; }
    /// Over all connections, counted when handed to the system.
    qint64 sentBytes() const { return m_sent; }
    /// Connections of which a script saw that the other side ended them.
    int connectionsClosedByPeer() const { return m_closedByPeer; }
    ///@}

private:
    friend class RawHttpConnection;

    void acceptAll();
    void record(const RawHttpRequest &request);

    Script m_script;
    int m_listener = -1;
    int m_tearDown = -1; ///< An eventfd, readable from the tear-down on.
    quint16 m_port = 0;
    std::atomic<bool> m_torn = false;
    std::atomic<int> m_accepted = 0;
    std::atomic<int> m_open = 0;
    std::atomic<int> m_closedByPeer = 0;
    std::atomic<qint64> m_sent = 0;
    mutable std::mutex m_mutex;
    QList<RawHttpRequest> m_requests; ///< Guarded by m_mutex.
    std::vector<std::thread> m_scripts;
    std::thread m_acceptor;
};

/// The bytes of a whole response with a `Content-Length`.
QByteArray rawHttpResponse(int status, const QByteArray &body, const HttpHeaders &headers = {});

/// The head of a response with these fields and nothing else, up to the empty line.
QByteArray rawHttpHead(int status, const HttpHeaders &headers);

} // namespace morvane
