#include "localmodel/RunProgram.h"

#include "async/CheckCancelled.h"
#include "async/CurrentContext.h"
#include "async/OffMain.h"
#include "async/Sleep.h"
#include "async/Wait.h"
#include "base/ChildProcess.h"
#include "localmodel/InstallError.h"

#include <QFile>
#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <memory>
#include <poll.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// What a program that was asked to end has left for that.
constexpr int endLimitMilliseconds = 2000;

/// How often a program is looked for on systems that do not tell its end.
constexpr std::chrono::milliseconds withoutNotice{50};

/// Ends with its object: the program is asked to end, and waited for and killed elsewhere.
class RunningProgram {
public:
    explicit RunningProgram(ChildProcess child) : m_child(std::make_shared<ChildProcess>(std::move(child))) {}
    ~RunningProgram()
    {
        if (!m_child->isRunning())
            return;
        m_child->signalGroup(SIGTERM);
        m_child->signalGroup(SIGINT);
        QThreadPool::globalInstance()->start([child = std::move(m_child)]() mutable {
            pollfd end{child->endNotice().get(), POLLIN, 0};
            ::poll(&end, 1, endLimitMilliseconds);
            child.reset();
        });
    }
    RunningProgram(const RunningProgram &) = delete;
    RunningProgram &operator=(const RunningProgram &) = delete;

    ChildProcess &child() { return *m_child; }

private:
    std::shared_ptr<ChildProcess> m_child;
};

/// Awaits that a descriptor can be read, or the deadline. Throws Cancelled.
class ReadableAwaiter {
public:
    ReadableAwaiter(int descriptor, std::optional<Clock::TimePoint> deadline)
        : m_descriptor(descriptor), m_deadline(deadline)
    {
    }

    bool await_ready() const { return false; }
    template <class Promise> void await_suspend(std::coroutine_handle<Promise> coroutine)
    {
        m_wait.begin(coroutine);
        m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                         [notifier = m_notifier.get(), signal = m_wait.signal()] {
                             notifier->setEnabled(false);
                             signal->fire();
                         });
        Clock &clock = m_wait.context().scheduler->clock();
        if (m_deadline)
            m_timer = clock.after(*m_deadline - clock.now(), [signal = m_wait.signal()] { signal->fire(); });
    }
    void await_resume() { m_wait.finish(); }

private:
    int m_descriptor;
    std::optional<Clock::TimePoint> m_deadline;
    Wait m_wait;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::unique_ptr<Clock::Timer> m_timer;
};

ChildProcess::Options optionsOf(const ProgramOrder &order)
{
    ChildProcess::Options options{
        QFile::encodeName(order.path), {}, order.environment, ChildProcess::Errors::withOutput};
    for (const QString &argument : order.arguments)
        options.arguments.append(argument.toUtf8());
    return options;
}

/// Hands on a little of what is there, since whoever takes it looks at each letter on the main thread; false
/// at the end.
bool readSome(const FileDescriptor &pipe, const std::function<void(QByteArrayView)> &onOutput)
{
    std::array<char, 8192> bytes;
    const ssize_t count = ::read(pipe.get(), bytes.data(), bytes.size());
    if (count > 0 && onOutput)
        onOutput(QByteArrayView(bytes.data(), count));
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

} // namespace

Task<int> runProgram(ProgramOrder order)
{
    const TaskContext context = co_await currentContext();
    Clock &clock = context.scheduler->clock();
    std::optional<Clock::TimePoint> deadline;
    if (order.limit)
        deadline = clock.now() + *order.limit;
    auto started = co_await runOffMain([options = optionsOf(order)] { return ChildProcess::start(options); });
    if (!started)
        throw InstallError(started.error());
    RunningProgram program(std::move(*started));
    co_await checkCancelled();

    bool hasOutput = true;
    std::optional<int> status;
    while (!status) {
        const FileDescriptor &awaited = hasOutput ? program.child().output() : program.child().endNotice();
        if (awaited.isOpen())
            co_await ReadableAwaiter(awaited.get(), deadline);
        else
            co_await sleepFor(withoutNotice);
        if (deadline && clock.now() >= *deadline)
            throw InstallError(u"Command timed out after %1s."_s.arg(order.limit->count()));
        if (hasOutput)
            hasOutput = readSome(program.child().output(), order.onOutput);
        else
            status = program.child().takeStatus();
    }
    co_return *status;
}

} // namespace morvane
