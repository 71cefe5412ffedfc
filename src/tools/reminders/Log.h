#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &remindersLog()
{
    static const FolderLog log("morvane.tools.reminders");
    return log;
}

} // namespace morvane
