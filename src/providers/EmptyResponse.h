#pragma once

#include "model/AITool.h"

namespace morvane {

/// Throws AIServiceError::Api if a turn brought neither text nor a tool call.
void throwIfEmpty(const AITurnResult &result);

} // namespace morvane
