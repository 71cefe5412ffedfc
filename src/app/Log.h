#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &appLog()
{
    static const FolderLog log("morvane.app");
    return log;
}

} // namespace morvane
