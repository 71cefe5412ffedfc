#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &providersLog()
{
    static const FolderLog log("morvane.providers");
    return log;
}

} // namespace morvane
