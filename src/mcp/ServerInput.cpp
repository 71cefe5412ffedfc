#include "mcp/ServerInput.h"

#include "base/RegularFile.h"
#include "mcp/Log.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <unistd.h>

namespace morvane {

namespace {

/// While it lives, a broken pipe is an error of a write of this thread and nothing more.
class WithoutBrokenPipeSignal {
public:
    WithoutBrokenPipeSignal()
    {
        sigset_t pipe = brokenPipe();
        ::pthread_sigmask(SIG_BLOCK, &pipe, &m_before);
    }
    ~WithoutBrokenPipeSignal()
    {
        const int error = errno;
        if (error == EPIPE && !::sigismember(&m_before, SIGPIPE)) {
            const sigset_t pipe = brokenPipe();
            const timespec now{};
            ::sigtimedwait(&pipe, nullptr, &now);
        }
        ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
        errno = error;
    }
    WithoutBrokenPipeSignal(const WithoutBrokenPipeSignal &) = delete;
    WithoutBrokenPipeSignal &operator=(const WithoutBrokenPipeSignal &) = delete;

private:
    static sigset_t brokenPipe()
    {
        sigset_t set;
        ::sigemptyset(&set);
        ::sigaddset(&set, SIGPIPE);
        return set;
    }

    sigset_t m_before{};
};

} // namespace

ServerInput::ServerInput(FileDescriptor pipe, std::function<void()> needsFlush)
    : m_pipe(std::move(pipe)), m_needsFlush(std::move(needsFlush))
{
}

bool ServerInput::write(QByteArray message)
{
    message.append('\n');
    std::unique_lock lock(m_mutex);
    if (!m_pipe.isOpen())
        return false;
    m_queue.push_back(std::move(message));
    if (m_queue.size() > 1)
        return true;
    const Written written = writeQueue();
    lock.unlock();
    if (written == Written::some)
        m_needsFlush();
    return written != Written::failed;
}

bool ServerInput::flush()
{
    const std::lock_guard lock(m_mutex);
    return writeQueue() != Written::failed;
}

bool ServerInput::isWaiting() const
{
    const std::lock_guard lock(m_mutex);
    return !m_queue.empty();
}

int ServerInput::descriptor() const
{
    const std::lock_guard lock(m_mutex);
    return m_pipe.get();
}

void ServerInput::close()
{
    const std::lock_guard lock(m_mutex);
    m_pipe.close();
    m_queue.clear();
    m_sent = 0;
}

ServerInput::Written ServerInput::writeQueue()
{
    const WithoutBrokenPipeSignal guard;
    while (!m_queue.empty()) {
        const QByteArray &message = m_queue.front();
        const ssize_t count =
            ::write(m_pipe.get(), message.constData() + m_sent, std::size_t(message.size() - m_sent));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN)
            return Written::some;
        if (count < 0) {
            qCWarning(mcpLog) << "a tool server does not read what is sent to it:" << systemReason(errno);
            m_pipe.close();
            m_queue.clear();
            m_sent = 0;
            errno = EPIPE;
            return Written::failed;
        }
        m_sent += count;
        if (m_sent == message.size()) {
            m_queue.pop_front();
            m_sent = 0;
        }
    }
    return Written::all;
}

} // namespace morvane
