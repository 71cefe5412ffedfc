#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &toolsLog()
{
    static const FolderLog log("morvane.tools");
    return log;
}

} // namespace morvane
