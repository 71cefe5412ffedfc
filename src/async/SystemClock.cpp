#include "async/SystemClock.h"

#include <QTimer>

namespace morvane {

namespace {

class QtTimer final : public Clock::Timer {
public:
    QtTimer(Clock::Duration delay, std::function<void()> function)
    {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, std::move(function));
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(delay));
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
