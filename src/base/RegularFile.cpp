#include "base/RegularFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

std::unexpected<QString> notRegular(mode_t mode)
{
    return std::unexpected(S_ISDIR(mode) ? systemReason(EISDIR) : u"Not a regular file"_s);
}

} // namespace

bool isLink(const char *path)
{
    struct stat status{};
    return ::lstat(path, &status) == 0 && S_ISLNK(status.st_mode);
}

QString systemReason(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

std::expected<RegularFile, QString> RegularFile::open(const char *path, Links links)
{
    struct stat status{};
    // Opening alone makes some devices act, so a path is looked at first.
    if (links == Links::follow) {
        if (::stat(path, &status) != 0)
            return std::unexpected(systemReason(errno));
        if (!S_ISREG(status.st_mode))
            return notRegular(status.st_mode);
    }
    // Should the path have changed meanwhile, a pipe still does not block.
    const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    FileDescriptor descriptor(::open(path, links == Links::follow ? flags : flags | O_NOFOLLOW));
    if (!descriptor.isOpen() || ::fstat(descriptor.get(), &status) != 0)
        return std::unexpected(systemReason(errno));
    if (!S_ISREG(status.st_mode))
        return notRegular(status.st_mode);
    return RegularFile(std::move(descriptor), status.st_size);
}

void RegularFile::makePrivate() const
{
    struct stat status{};
    if (::fstat(m_descriptor.get(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0 &&
        status.st_uid == ::geteuid() && status.st_nlink == 1)
        ::fchmod(m_descriptor.get(), S_IRUSR | S_IWUSR);
}

std::expected<qint64, QString> RegularFile::read(char *buffer, qint64 capacity)
{
    qint64 length = 0;
    while (length < capacity) {
        const ssize_t count =
            ::read(m_descriptor.get(), buffer + length, static_cast<std::size_t>(capacity - length));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::unexpected(systemReason(errno));
        if (count == 0)
            break;
        length += count;
    }
    return length;
}

std::expected<QByteArray, QString> RegularFile::readUpTo(qint64 limit)
{
    constexpr qint64 firstPiece = 65536;
    QByteArray bytes;
    // A file whose size is told is read in one piece; the byte more tells whether it has grown.
    qint64 capacity = std::min(limit, std::max(m_size, firstPiece)) + 1;
    while (true) {
        const qint64 length = bytes.size();
        bytes.resize(capacity);
        const auto count = read(bytes.data() + length, capacity - length);
        if (!count)
            return std::unexpected(count.error());
        bytes.resize(length + *count);
        if (bytes.size() < capacity || capacity > limit)
            return bytes;
        capacity = std::min(limit, capacity * 2) + 1;
    }
}

} // namespace morvane
