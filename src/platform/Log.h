#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &platformLog()
{
    static const FolderLog log("morvane.platform");
    return log;
}

} // namespace morvane
