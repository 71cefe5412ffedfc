#pragma once

#include "mcp/MCPError.h"
#include "mcp/MCPTool.h"
#include "model/ToolResult.h"

#include <QList>
#include <QString>
#include <boost/json.hpp>
#include <expected>
#include <optional>

namespace morvane {

// What the messages of a tool server mean. Any thread.

/// The `result` of an answer, empty if it is no object. Fails with the server's reason, and with "did not
/// respond in time" for no message at all.
std::expected<boost::json::object, MCPError> resultOf(std::optional<boost::json::object> message);

/// The tools of a `tools/list` result. Entries without a name are left out.
std::expected<QList<MCPTool>, MCPError> listedTools(const boost::json::object &result);

/// The outcome of a `tools/call` result: the text items of its content, one below the other. They are given
/// back while it is made, since they may be most of what the memory holds.
ToolResult toolResult(boost::json::object result);

} // namespace morvane
