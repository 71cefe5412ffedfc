#include "platform/linux/notifications/WallClockTimer.h"

#include "base/ReferenceDate.h"

#include <QSocketNotifier>
#include <algorithm>
#include <cmath>
#include <sys/timerfd.h>

namespace morvane {

namespace {

/// Seconds since 1970 that every kernel takes; whoever waits for later looks again then.
constexpr double latest = 8e9;

} // namespace

WallClockTimer::WallClockTimer(QObject *parent)
    : QObject(parent), m_timer(::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK))
{
    if (!m_timer.isOpen())
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_timer.get(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &WallClockTimer::read);
}

WallClockTimer::~WallClockTimer() = default;

void WallClockTimer::setTo(double date)
{
    const double unixTime = std::clamp(date + double(referenceDateUnixSeconds), 1.0, latest);
    const double whole = std::floor(unixTime);
    itimerspec time{};
    time.it_value.tv_sec = static_cast<time_t>(whole);
    time.it_value.tv_nsec = static_cast<long>((unixTime - whole) * 1e9);
    ::timerfd_settime(m_timer.get(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &time, nullptr);
}

void WallClockTimer::read()
{
    quint64 count = 0;
    // Fails with ECANCELED after a jump of the calendar, which is a reason to ring as well.
    static_cast<void>(::read(m_timer.get(), &count, sizeof count));
    Q_EMIT rang();
}

} // namespace morvane
