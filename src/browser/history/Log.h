#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &browserHistoryLog()
{
    static const FolderLog log("morvane.browser.history");
    return log;
}

} // namespace morvane
