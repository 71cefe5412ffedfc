#include "async/SystemClock.h"

#include <QTimer>
#include <algorithm>
#include <limits>

namespace morvane {

namespace {

/// What QTimer takes; it never fires with less, and about 24 days are the most.
constexpr std::chrono::milliseconds shortest{0};
constexpr std::chrono::milliseconds longest{std::numeric_limits<int>::max()};

class QtTimer final : public Clock::Timer {
public:
    QtTimer(Clock::Duration delay, std::function<void()> function)
    {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(function));
        m_timer.start(std::clamp(std::chrono::ceil<std::chrono::milliseconds>(delay), shortest, longest));
    }

private:
    QTimer m_timer;
};

} // namespace

Clock::TimePoint SystemClock::now() const
{
    return std::chrono::steady_clock::now();
}

std::unique_ptr<Clock::Timer> SystemClock::after(Duration delay, std::function<void()> function)
{
    return std::make_unique<QtTimer>(delay, std::move(function));
}

} // namespace morvane
