#pragma once

#include <QByteArray>

namespace morvane {

inline constexpr char sessionHeader[] = "Mcp-Session-Id";
inline constexpr char protocolVersionHeader[] = "MCP-Protocol-Version";

} // namespace morvane
