#include "tools/ShellThread.h"

#include "tools/ShellEnvironment.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

using Time = std::chrono::steady_clock;

constexpr std::size_t pieceSize = 65536; // as much as a pipe holds
/// How long commands have at the program's end to stop by themselves.
constexpr std::chrono::milliseconds timeToStop = 200ms;

FileDescriptor openWake()
{
    FileDescriptor wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake.isOpen())
        throw std::system_error(errno, std::generic_category());
    return wake;
}

} // namespace

ShellThread::ShellThread(QByteArray shell, const ShellLimits &limits)
    : m_shell(std::move(shell)), m_limits(limits), m_wake(openWake()), m_buffer(pieceSize),
      m_thread([this] { attend(); })
{
}

ShellThread::~ShellThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    wake();
}

void ShellThread::run(const QString &command, OneShot<QString> answer)
{
    {
        const std::lock_guard lock(m_mutex);
        m_orders.push_back({command, std::move(answer)});
    }
    wake();
}

void ShellThread::attend()
{
    while (takeOrders()) {
        for (ShellRun &run : m_runs)
            run.advance(Time::now(), m_buffer);
        m_runs.remove_if([](const ShellRun &run) { return run.isOver(); });
        wait();
    }
    stopAll();
}

bool ShellThread::takeOrders()
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t read = ::read(m_wake.get(), &count, sizeof count);
    std::vector<Order> orders;
    {
        const std::lock_guard lock(m_mutex);
        if (m_ends)
            return false;
        orders.swap(m_orders);
    }
    for (const Order &order : orders)
        start(order);
    return true;
}

void ShellThread::start(const Order &order)
{
    OneShot<QString> answer = order.answer;
    auto child = ChildProcess::start(
        {m_shell, {"-c", order.command.toUtf8()}, shellEnvironment(currentEnvironment())});
    if (child)
        m_runs.emplace_back(std::move(*child), std::move(answer), m_limits, Time::now());
    else
        answer.resume(u"Error starting the command: "_s + child.error());
}

void ShellThread::wait()
{
    std::vector<pollfd> waits{{m_wake.get(), POLLIN, 0}};
    std::optional<Time::time_point> deadline;
    for (const ShellRun &run : m_runs) {
        run.addTo(waits);
        if (const auto next = run.deadline())
            deadline = deadline ? std::min(*deadline, *next) : next;
    }
    int timeout = -1;
    if (deadline) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Time::now());
        timeout = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
    }
    ::poll(waits.data(), waits.size(), timeout);
}

void ShellThread::stopAll()
{
    for (ShellRun &run : m_runs)
        run.stop(SIGTERM);
    const auto deadline = Time::now() + timeToStop;
    const auto isRunning = [](const ShellRun &run) { return run.isRunning(); };
    while (Time::now() < deadline && std::any_of(m_runs.begin(), m_runs.end(), isRunning)) {
        for (ShellRun &run : m_runs)
            run.advance(Time::now(), m_buffer);
        std::this_thread::sleep_for(1ms);
    }
    m_runs.clear(); // kills what is left
}

void ShellThread::wake()
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wake.get(), &one, sizeof one);
}

} // namespace morvane
