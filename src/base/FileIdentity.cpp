#include "base/FileIdentity.h"

#include <QFile>
#include <sys/stat.h>

namespace morvane {

namespace {

qint64 nanoseconds(const timespec &time)
{
    constexpr qint64 perSecond = 1'000'000'000;
    return time.tv_sec * perSecond + time.tv_nsec;
}

std::optional<FileIdentity> identity(const struct stat &status)
{
    if (!S_ISREG(status.st_mode))
        return std::nullopt;
    return FileIdentity{.device = status.st_dev,
                        .inode = status.st_ino,
                        .modifiedNanoseconds = nanoseconds(status.st_mtim),
                        .changedNanoseconds = nanoseconds(status.st_ctim),
                        .size = status.st_size};
}

} // namespace

std::optional<FileIdentity> FileIdentity::ofPath(const QString &path)
{
    struct stat status{};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? identity(status) : std::nullopt;
}

std::optional<FileIdentity> FileIdentity::ofDescriptor(int descriptor)
{
    struct stat status{};
    return ::fstat(descriptor, &status) == 0 ? identity(status) : std::nullopt;
}

} // namespace morvane
