#include "base/AtomicFile.h"

#include "base/FileDescriptor.h"
#include "base/RegularFile.h"
#include "base/TemporaryFile.h"

#include <QFile>
#include <cerrno>
#include <chrono>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

std::unexpected<QString> systemFailure(int error = errno)
{
    return std::unexpected(systemReason(error));
}

std::string folderOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

/// The file that a chain of links ends at, also one that does not exist yet; `path` itself if it is no link.
std::string followLinks(std::string path)
{
    constexpr int longestChain = 40; // as in the kernel
    for (int i = 0; i < longestChain; ++i) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            return path;
        const std::string_view next(target, static_cast<std::size_t>(length));
        path = next.starts_with('/') ? std::string() : folderOf(path) + '/';
        path += next;
    }
    return path;
}

/// Fails unless there is nothing at the path or something that may be replaced.
std::expected<void, QString> requireReplaceable(const std::string &path, LinkRule links)
{
    struct stat status{};
    if (::lstat(path.c_str(), &status) != 0)
        return errno == ENOENT ? std::expected<void, QString>() : systemFailure();
    if (S_ISREG(status.st_mode) || (S_ISLNK(status.st_mode) && links == LinkRule::replace))
        return {};
    if (S_ISLNK(status.st_mode)) // it was followed, and led to no end
        return systemFailure(ELOOP);
    if (S_ISDIR(status.st_mode))
        return systemFailure(EISDIR);
    return std::unexpected(u"Not a regular file"_s);
}

/// A slash at the end of a path leads through a link.
std::string withoutSlashesBehind(std::string path)
{
    while (path.size() > 1 && path.ends_with('/'))
        path.pop_back();
    return path;
}

std::expected<void, QString> syncFolder(const std::string &path)
{
    const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen() || !syncDescriptor(folder.get()))
        return systemFailure();
    return {};
}

/// Removes a temporary file whose writer is gone; the lock keeps a new one from taking it for its own.
void removeIfAbandoned(int folder, const char *name)
{
    struct stat status{};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode))
        return;
    const FileDescriptor file(::openat(folder, name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen())
        return;
    const bool isLocked = ::flock(file.get(), LOCK_EX | LOCK_NB) == 0;
    if (!isLocked && errno == EWOULDBLOCK)
        return;
    constexpr std::chrono::seconds longestWrite = std::chrono::hours(1);
    const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    if (isLocked || now - status.st_mtime > longestWrite.count())
        ::unlinkat(folder, name, 0);
}

} // namespace

std::expected<void, QString> writeFileAtomically(const QString &path, QByteArrayView bytes,
                                                 Durability durability, unsigned permissions, LinkRule links)
{
    const std::string given = QFile::encodeName(path).toStdString();
    const std::string target = links == LinkRule::follow ? followLinks(given) : given;
    const std::string folder = folderOf(target);
    if (const auto replaceable = requireReplaceable(target, links); !replaceable)
        return replaceable;

    TemporaryFile file(folder);
    const bool written = file.isOpen() && (permissions == privateFile || file.setPermissions(permissions)) &&
                         file.write(bytes) && (durability == Durability::processCrash || file.sync()) &&
                         file.renameTo(target);
    if (!written)
        return systemFailure();
    return durability == Durability::powerLoss ? syncFolder(folder) : std::expected<void, QString>();
}

std::expected<void, QString> syncFile(const QString &path)
{
    const std::string target = followLinks(QFile::encodeName(path).toStdString());
    const auto file = RegularFile::open(target.c_str(), RegularFile::Links::refuse);
    if (!file)
        return std::unexpected(file.error());
    if (!syncDescriptor(file->descriptor()))
        return systemFailure();
    return syncFolder(folderOf(target));
}

void removeAbandonedTemporaryFiles(const QString &folder)
{
    const std::string path = QFile::encodeName(folder).toStdString();
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(::opendir(path.c_str()), &::closedir);
    if (!directory)
        return;
    const int descriptor = ::dirfd(directory.get());
    while (const dirent *const entry = ::readdir(directory.get()))
        if (std::string_view(entry->d_name).starts_with(TemporaryFile::namePrefix))
            removeIfAbandoned(descriptor, entry->d_name);
}

std::expected<void, QString> ensurePrivateFolder(const QString &path)
{
    const std::string folder = QFile::encodeName(path).toStdString();
    struct stat status{};
    if (::stat(folder.c_str(), &status) != 0) {
        for (std::size_t end = folder.find('/', 1); end != std::string::npos; end = folder.find('/', end + 1))
            ::mkdir(folder.substr(0, end).c_str(), S_IRWXU);
        if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST)
            return systemFailure();
        if (::stat(folder.c_str(), &status) != 0)
            return systemFailure();
    }
    if (!S_ISDIR(status.st_mode))
        return systemFailure(ENOTDIR);
    const bool isPrivate = (status.st_mode & ALLPERMS) == S_IRWXU;
    if (!isPrivate && !isLink(withoutSlashesBehind(folder).c_str()) && ::chmod(folder.c_str(), S_IRWXU) != 0)
        return systemFailure();
    return {};
}

} // namespace morvane
