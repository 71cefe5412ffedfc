#pragma once

#include "app/ApprovalGate.h"

#include <utility>

namespace morvane {

/// Looks at a call and shows it to the user, whatever the verdict.
inline Task<std::optional<ToolPermit>> askForPermit(ApprovalGate *gate, AIToolCall call)
{
    ToolVerdict verdict = co_await gate->decide(std::move(call));
    co_return co_await gate->requestPermission(std::move(verdict));
}

} // namespace morvane
