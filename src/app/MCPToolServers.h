#pragma once

#include "tools/ToolServerPort.h"

namespace morvane {

class MCPManager;

/// The tools of the connected tool servers, for the agent.
class MCPToolServers final : public ToolServerPort {
public:
    /// `manager` must outlive it.
    explicit MCPToolServers(MCPManager &manager) : m_manager(manager) {}

    QList<AITool> exposedAITools() const override;
    Task<ToolResult> execute(ToolPermit permit) override;

private:
    MCPManager &m_manager;
};

} // namespace morvane
