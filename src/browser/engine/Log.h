#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &engineLog()
{
    static const FolderLog log("morvane.browser.engine");
    return log;
}

} // namespace morvane
