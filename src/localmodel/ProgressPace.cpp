#include "localmodel/ProgressPace.h"

#include <utility>

namespace morvane {

ProgressPace::ProgressPace(Clock &clock, LocalModelRuntime::ProgressCallback onProgress)
    : m_clock(clock), m_onProgress(std::move(onProgress))
{
}

void ProgressPace::report(const QString &label, std::optional<double> fraction)
{
    Report report{label, fraction};
    const Clock::TimePoint now = m_clock.now();
    if (!m_last || now - m_lastTime >= interval) {
        pass(report);
        return;
    }
    m_heldBack = std::move(report);
    if (!m_timer)
        m_timer = m_clock.after(m_lastTime + interval - now, [this] { passHeldBack(); });
}

void ProgressPace::passHeldBack()
{
    m_timer.reset();
    if (const auto report = std::exchange(m_heldBack, std::nullopt))
        pass(*report);
}

void ProgressPace::pass(const Report &report)
{
    m_timer.reset();
    m_heldBack.reset();
    m_lastTime = m_clock.now();
    if (m_last == report)
        return;
    m_last = report;
    m_onProgress(report.label, report.fraction);
}

} // namespace morvane
