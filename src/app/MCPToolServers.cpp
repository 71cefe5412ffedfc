#include "app/MCPToolServers.h"

#include "mcp/MCPManager.h"

namespace morvane {

QList<AITool> MCPToolServers::exposedAITools() const
{
    return m_manager.exposedAITools();
}

Task<ToolResult> MCPToolServers::execute(ToolPermit permit)
{
    return m_manager.execute(permit.call().name, permit.call().arguments);
}

} // namespace morvane
