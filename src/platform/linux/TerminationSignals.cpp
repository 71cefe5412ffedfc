#include "platform/linux/TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

namespace morvane {

namespace {

constexpr std::array terminationSignals{SIGTERM, SIGINT, SIGHUP};

/// A signal handler gets no context, so this is the one place where process-wide state cannot be avoided.
/// Blocking the signals for a signalfd would not need it, but child processes would inherit the block.
volatile std::sig_atomic_t wakeDescriptor = -1;

void wake(int)
{
    const int savedError = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wakeDescriptor, &one, sizeof one);
    errno = savedError;
}

void handleWith(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : terminationSignals)
        sigaction(signal, &action, nullptr);
}

} // namespace

TerminationSignals::TerminationSignals()
{
    wakeDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(wakeDescriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [] { QCoreApplication::quit(); });
    handleWith(wake);
}

TerminationSignals::~TerminationSignals()
{
    handleWith(SIG_DFL);
    m_notifier.reset();
    close(wakeDescriptor);
    wakeDescriptor = -1;
}

} // namespace morvane
