#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &storeLog()
{
    static const FolderLog log("morvane.store");
    return log;
}

} // namespace morvane
