#include "base/AtomicFile.h"

#include "base/FileDescriptor.h"

#include <QFile>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

namespace {

constexpr std::string_view temporaryPrefix = ".morvane-write-";

std::unexpected<QString> systemFailure(int error = errno)
{
    return std::unexpected(QString::fromLocal8Bit(::strerror(error)));
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
        const std::string next(target, static_cast<std::size_t>(length));
        path = next.starts_with('/') ? next : folderOf(path) + '/' + next;
    }
    return path;
}

bool writeAll(int descriptor, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes = bytes.sliced(written);
    }
    return true;
}

/// Brings a file or a folder to the disk. Some file systems know no such thing; then there is none to wait
/// for.
bool sync(int descriptor)
{
    int result = 0;
    do
        result = ::fsync(descriptor);
    while (result != 0 && errno == EINTR);
    return result == 0 || errno == EINVAL || errno == ENOTSUP;
}

std::expected<void, QString> syncPath(const std::string &path)
{
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen() || !sync(file.get()))
        return systemFailure();
    return {};
}

} // namespace

std::expected<void, QString> writeFileAtomically(const QString &path, QByteArrayView bytes,
                                                 Durability durability, unsigned permissions)
{
    const std::string target = followLinks(QFile::encodeName(path).toStdString());
    const std::string folder = folderOf(target);
    std::string temporary = folder + '/' + std::string(temporaryPrefix) + std::string(6, 'X');

    FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC)); // 0600
    if (!file.isOpen())
        return systemFailure();

    const bool written = (permissions == privateFile || ::fchmod(file.get(), permissions) == 0) &&
                         writeAll(file.get(), bytes) &&
                         (durability == Durability::processCrash || sync(file.get())) && file.close() &&
                         ::rename(temporary.c_str(), target.c_str()) == 0;
    if (!written) {
        const int error = errno;
        ::unlink(temporary.c_str());
        return systemFailure(error);
    }
    return durability == Durability::powerLoss ? syncPath(folder) : std::expected<void, QString>();
}

std::expected<void, QString> syncFile(const QString &path)
{
    const std::string target = followLinks(QFile::encodeName(path).toStdString());
    const auto synced = syncPath(target);
    return synced ? syncPath(folderOf(target)) : synced;
}

void removeAbandonedTemporaryFiles(const QString &folder)
{
    constexpr std::chrono::seconds age = std::chrono::hours(1);
    const std::string path = QFile::encodeName(folder).toStdString();
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(::opendir(path.c_str()), &::closedir);
    if (!directory)
        return;
    const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    while (const dirent *const entry = ::readdir(directory.get())) {
        struct stat status{};
        const std::string_view name = entry->d_name;
        if (name.starts_with(temporaryPrefix) &&
            ::fstatat(::dirfd(directory.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode) && now - status.st_mtime > age.count())
            ::unlinkat(::dirfd(directory.get()), entry->d_name, 0);
    }
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
    if ((status.st_mode & ALLPERMS) != S_IRWXU && ::chmod(folder.c_str(), S_IRWXU) != 0)
        return systemFailure();
    return {};
}

} // namespace morvane
