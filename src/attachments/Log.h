#pragma once

#include "base/Log.h"

namespace morvane {

inline const QLoggingCategory &attachmentsLog()
{
    static const FolderLog log("morvane.attachments");
    return log;
}

} // namespace morvane
