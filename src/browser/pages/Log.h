#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &pagesLog()
{
    static const FolderLog log("morvane.browser.pages");
    return log;
}

} // namespace morvane
