#pragma once

#include "base/FileDescriptor.h"

#include <QByteArray>
#include <deque>
#include <functional>
#include <mutex>

namespace morvane {

/// The write end of a tool server's standard input. What the pipe does not take at once waits in a queue, so
/// that a server that does not read holds up nobody. Any thread.
class ServerInput {
public:
    /// `pipe` does not block. `needsFlush` is called when something has to wait; flush() is to follow once
    /// the pipe is writable.
    ServerInput(FileDescriptor pipe, std::function<void()> needsFlush);

    /// Sends one message and a line feed; false if the server cannot be written to any more.
    bool write(QByteArray message);

    /// Sends what waits; false if that failed, and the messages that waited are lost.
    bool flush();

    /// Whether something waits for the pipe to become writable.
    bool isWaiting() const;
    int descriptor() const;

    /// Closes the pipe. Messages that wait are dropped, and later ones refused.
    void close();

private:
    enum class Written { all, some, failed };
    /// Sends the front of the queue as far as the pipe takes it.
    Written writeQueue();

    mutable std::mutex m_mutex;
    FileDescriptor m_pipe; ///< Guarded by m_mutex, as the next two.
    std::deque<QByteArray> m_queue;
    qsizetype m_sent = 0; ///< Of the first message in the queue.
    const std::function<void()> m_needsFlush;
};

} // namespace morvane
