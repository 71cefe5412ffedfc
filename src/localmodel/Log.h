#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &localModelLog()
{
    static const FolderLog log("morvane.localmodel");
    return log;
}

} // namespace morvane
