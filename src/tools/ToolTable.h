#pragma once

#include "tools/ToolRecord.h"

#include <QList>
#include <QString>

namespace morvane {

// The table of the built-in tools: built on first use, never changed, any thread. Order, names, descriptions
// and parameters are part of the program's behaviour: models are guided by their wording.

/// The 41 tools as the model sees them, in the order in which they are offered.
const QList<AITool> &toolTable();

/// The record of the built-in tool with exactly this name, or null.
const ToolRecord *findTool(const QString &name);

/// Who carries out calls of this name, whether or not there is such a tool. The agent loop's own tools come
/// first, so that no tool of a server can shadow them.
ToolRoad toolRoad(const QString &name);

/// When calls of this name wait for the user.
ApprovalRule approvalRule(const QString &name);

} // namespace morvane
