#pragma once

#include "base/FileDescriptor.h"
#include "mcp/StdioServer.h"

#include <QByteArray>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace morvane {

/// The thread that attends to all tool servers that run as child processes: launches them, reads what they
/// print, and sees them to their end. It starts with the first of them. Public functions: any thread.
class StdioThread {
public:
    /// Both are paths of programs. Throws std::system_error if the system is out of descriptors.
    explicit StdioThread(QByteArray guard, QByteArray shell = "/bin/zsh");
    /// Ends every server, and waits until they are gone: three seconds at most.
    ~StdioThread();
    StdioThread(const StdioThread &) = delete;
    StdioThread &operator=(const StdioThread &) = delete;

    /// Launches a server by a shell line. `receiver` is a number of takeReceiver().
    void start(QByteArray line, std::weak_ptr<PendingRequests> requests, quint64 receiver,
               OneShot<StdioServer::Started> started);

    /// Ends a server; does not wait for that. Harmless if it has ended.
    void end(quint64 receiver);

    /// A number that no server has had yet.
    quint64 takeReceiver();

    /// Servers that have not ended, among them those that are being ended.
    std::size_t runningServers() const;

private:
    struct Entry {
        quint64 receiver;
        StdioServer server;
    };

    void post();
    void attend();
    /// Whether all is to end.
    bool takeOrders();
    void advanceAll();
    void wait();

    const QByteArray m_guard;
    const QByteArray m_shell;
    /// Readable when there is an order. Shared with those who may write late.
    const std::shared_ptr<FileDescriptor> m_wake;
    mutable std::mutex m_mutex;
    std::vector<StdioServer::Order> m_starts; ///< Guarded by m_mutex, as the next four.
    std::vector<quint64> m_ends;
    quint64 m_lastReceiver = 0;
    std::size_t m_running = 0;
    bool m_closing = false;
    std::list<Entry> m_servers; ///< The thread's own, as the next two.
    std::vector<char> m_buffer;
    std::vector<pollfd> m_waits;
    std::thread m_thread;
};

} // namespace morvane
