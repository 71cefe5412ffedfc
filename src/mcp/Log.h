#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &mcpLog()
{
    static const FolderLog log("morvane.mcp");
    return log;
}

} // namespace morvane
