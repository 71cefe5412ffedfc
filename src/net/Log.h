#pragma once

#include "base/Log.h"
#include "net/TransportError.h"

namespace morvane {

inline const QLoggingCategory &netLog()
{
    static const FolderLog log("morvane.net");
    return log;
}

/// What kind of failure it was, in words, without what the other side added.
inline QString reasonOf(const TransportError &error)
{
    return TransportError(error.kind()).description();
}

} // namespace morvane
