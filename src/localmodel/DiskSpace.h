#pragma once

#include <QString>

namespace morvane {

/// Free bytes on the volume of the user's home folder; -1 if that cannot be told. May block.
qint64 freeDiskSpace();

/// Throws InstallError if less than `bytes` is free; `what` completes "Not enough free disk space to …". An
/// unknown free space suffices.
void requireFreeDiskSpace(qint64 bytes, const QString &what, qint64 free);

} // namespace morvane
