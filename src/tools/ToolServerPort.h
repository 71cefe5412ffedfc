#pragma once

#include "async/Task.h"
#include "model/AITool.h"
#include "model/ToolResult.h"
#include "tools/ToolPermit.h"

#include <QList>
#include <QString>

namespace morvane {

/// What the names of all tools of tool servers begin with.
inline constexpr QLatin1String toolServerPrefix("mcp_");

/// What the agent asks of external tool servers. Main thread.
class ToolServerPort {
public:
    virtual ~ToolServerPort() = default;

    /// The tools of all connected servers, under the names that the model uses ("mcp_…").
    virtual QList<AITool> exposedAITools() const = 0;
    /// Carries out a call; never throws.
    virtual Task<ToolResult> execute(ToolPermit permit) = 0;
};

} // namespace morvane
