#include "mcp/StdioThread.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <pthread.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace morvane {

namespace {

constexpr std::size_t readSize = 1024 * 1024; // as much as a server's pipe holds
/// How often to look for the end of a process on a system without end notices.
constexpr int lookMilliseconds = 10;

std::shared_ptr<FileDescriptor> openWake()
{
    auto wake = std::make_shared<FileDescriptor>(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake->isOpen())
        throw std::system_error(errno, std::generic_category());
    return wake;
}

void ring(const FileDescriptor &wake)
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wake.get(), &one, sizeof one);
}

} // namespace

StdioThread::StdioThread(QByteArray guard, QByteArray shell)
    : m_guard(std::move(guard)), m_shell(std::move(shell)), m_wake(openWake())
{
}

StdioThread::~StdioThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_closing = true;
    }
    post();
    if (m_thread.joinable())
        m_thread.join();
}

void StdioThread::start(QByteArray line, std::weak_ptr<PendingRequests> requests, quint64 receiver,
                        OneShot<StdioServer::Started> started)
{
    {
        const std::lock_guard lock(m_mutex);
        m_starts.push_back(
            {m_guard, m_shell, std::move(line), std::move(requests), receiver, std::move(started)});
        ++m_running;
        if (!m_thread.joinable())
            m_thread = std::thread([this] { attend(); });
    }
    post();
}

void StdioThread::end(quint64 receiver)
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends.push_back(receiver);
    }
    post();
}

quint64 StdioThread::takeReceiver()
{
    const std::lock_guard lock(m_mutex);
    return ++m_lastReceiver;
}

std::size_t StdioThread::runningServers() const
{
    const std::lock_guard lock(m_mutex);
    return m_running;
}

void StdioThread::post()
{
    ring(*m_wake);
}

void StdioThread::attend()
{
    pthread_setname_np(pthread_self(), "tool-servers");
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    m_buffer.resize(readSize);
    while (true) {
        const bool closing = takeOrders();
        advanceAll();
        if (closing && m_servers.empty())
            return;
        wait();
    }
}

bool StdioThread::takeOrders()
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t read = ::read(m_wake->get(), &count, sizeof count);
    std::vector<StdioServer::Order> starts;
    std::vector<quint64> ends;
    bool closing = false;
    {
        const std::lock_guard lock(m_mutex);
        starts.swap(m_starts);
        ends.swap(m_ends);
        closing = m_closing;
    }
    for (StdioServer::Order &order : starts) {
        const quint64 receiver = order.receiver;
        m_servers.emplace_back(receiver, StdioServer(std::move(order), [wake = m_wake] { ring(*wake); }));
    }
    for (Entry &entry : m_servers)
        if (closing || std::find(ends.begin(), ends.end(), entry.receiver) != ends.end())
            entry.server.end();
    return closing;
}

void StdioThread::advanceAll()
{
    for (Entry &entry : m_servers)
        if (!entry.server.isOver())
            entry.server.advance(m_buffer);
    m_servers.remove_if([](const Entry &entry) { return entry.server.isOver(); });
    const std::lock_guard lock(m_mutex);
    m_running = m_servers.size() + m_starts.size();
}

void StdioThread::wait()
{
    m_waits.assign(1, {m_wake->get(), POLLIN, 0});
    bool told = true;
    for (Entry &entry : m_servers) {
        entry.server.addTo(m_waits);
        told = told && entry.server.tellsItsEnd();
    }
    ::poll(m_waits.data(), m_waits.size(), told ? -1 : lookMilliseconds);
}

} // namespace morvane
