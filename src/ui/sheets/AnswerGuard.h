#pragma once

#include <chrono>
#include <functional>

namespace morvane {

/// Tells the present moment on a steady clock.
using SteadyNow = std::function<std::chrono::steady_clock::time_point()>;

/// Keeps a sheet from being answered by a user who does not know of it yet. A sheet may come up while the
/// user types, and what was meant for the text below must not answer it. So the sheet takes input only once
/// the user has paused for `quietTime`, counted from its appearance and from every key or button pressed
/// before the first pause. From then on it takes everything.
class AnswerGuard {
public:
    /// Longer than the gaps of running typing and of a double click, shorter than it takes to see a sheet and
    /// to decide. Web browsers hold their permission prompts back for as long.
    static constexpr std::chrono::milliseconds quietTime{500};

    explicit AnswerGuard(SteadyNow now) : m_now(std::move(now)) {}

    /// Begins anew; for every request that the sheet shows.
    void restart()
    {
        m_isArmed = false;
        m_lastInput = m_now();
    }

    /// After the sheet has closed: what follows its last input without a pause was meant for the sheet, too.
    void lingerOn() { m_isArmed = false; }

    /// Whether the user has not pressed anything for a while.
    bool isQuiet() const { return m_now() - m_lastInput >= quietTime; }

    /// Whether a key or button that was pressed just now is meant for the sheet.
    bool takesInput()
    {
        const auto moment = m_now();
        m_isArmed = m_isArmed || moment - m_lastInput >= quietTime;
        m_lastInput = moment;
        return m_isArmed;
    }

private:
    SteadyNow m_now;
    std::chrono::steady_clock::time_point m_lastInput{};
    bool m_isArmed = false;
};

} // namespace morvane
