#pragma once

#include "async/Task.h"
#include "model/AITool.h"
#include "tools/ToolPermit.h"

#include <QList>
#include <QString>

namespace morvane {

/// Whether the model means a tool of a tool server by that name.
inline bool isToolServerCall(const AIToolCall &call)
{
    return call.name.startsWith(QLatin1String("mcp_"));
}

/// What the agent asks of external tool servers. Main thread.
class ToolServerPort {
public:
    virtual ~ToolServerPort() = default;

    /// The tools of all connected servers, under the names that the model uses ("mcp_…").
    virtual QList<AITool> exposedAITools() const = 0;
    /// Carries out a call; never throws, a failure is a text that begins with "Error:".
    virtual Task<QString> execute(ToolPermit permit) = 0;
};

/// No tool server is connected.
class NoToolServers final : public ToolServerPort {
public:
    QList<AITool> exposedAITools() const override { return {}; }
    Task<QString> execute(ToolPermit) override
    {
        co_return QStringLiteral("Error: that tool's MCP server is not connected right now.");
    }
};

} // namespace morvane
