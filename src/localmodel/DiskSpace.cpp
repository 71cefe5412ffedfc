#include "localmodel/DiskSpace.h"

#include "localmodel/ByteString.h"
#include "localmodel/InstallError.h"

#include <QDir>
#include <QStorageInfo>

using namespace Qt::StringLiterals;

namespace morvane {

qint64 freeDiskSpace()
{
    const QStorageInfo volume(QDir::homePath());
    if (!volume.isValid() || !volume.isReady())
        return -1;
    return volume.bytesAvailable();
}

void requireFreeDiskSpace(qint64 bytes, const QString &what, qint64 free)
{
    if (free < 0 || free >= bytes)
        return;
    throw InstallError(
        u"Not enough free disk space to %1. You need about %2 free, but only %3 is available."_s.arg(
            what, byteString(bytes), byteString(free)));
}

} // namespace morvane
