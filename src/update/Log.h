#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &updateLog()
{
    static const FolderLog log("morvane.update");
    return log;
}

} // namespace morvane
