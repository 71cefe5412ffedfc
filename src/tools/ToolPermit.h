#pragma once

#include "tools/ToolVerdict.h"

#include <utility>

namespace morvane {

/// The proof that the approval gate let one call through, and that call itself. Tools are carried out for a
/// permit only, and the gate alone can make one, so that a road around it does not compile. Good for one use:
/// it is moved to the tool that uses it up.
class ToolPermit {
public:
    ToolPermit(ToolPermit &&) = default;
    ToolPermit &operator=(ToolPermit &&) = default;
    ToolPermit(const ToolPermit &) = delete;
    ToolPermit &operator=(const ToolPermit &) = delete;

    const AIToolCall &call() const { return m_verdict.call(); }

private:
    friend class ApprovalGate;
    explicit ToolPermit(ToolVerdict verdict) : m_verdict(std::move(verdict)) {}

    ToolVerdict m_verdict;
};

} // namespace morvane
