#pragma once

#include "async/Clock.h"
#include "localmodel/LocalModelRuntime.h"

#include <chrono>
#include <memory>
#include <optional>

namespace morvane {

/// Passes progress on at most ten times a second, and the newest always in the end: each report is seen and
/// heard by the window's readers. Main thread.
class ProgressPace {
public:
    static constexpr std::chrono::milliseconds interval{100};

    /// `clock` outlives it.
    ProgressPace(Clock &clock, LocalModelRuntime::ProgressCallback onProgress);

    void report(const QString &label, std::optional<double> fraction);

private:
    struct Report {
        QString label;
        std::optional<double> fraction;

        bool operator==(const Report &) const = default;
    };

    void pass(const Report &report);
    void passHeldBack();

    Clock &m_clock;
    LocalModelRuntime::ProgressCallback m_onProgress;
    std::optional<Report> m_last;
    std::optional<Report> m_heldBack;
    Clock::TimePoint m_lastTime{};
    std::unique_ptr<Clock::Timer> m_timer; ///< While a report is held back.
};

} // namespace morvane
