#include "archive/FolderWriter.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t folderMode = 0755;
constexpr mode_t plainMode = 0644;
constexpr mode_t programMode = 0755;

std::string joined(const EntryPath &path)
{
    std::string text;
    for (const std::string &name : path)
        text += (text.empty() ? "" : "/") + name;
    return text;
}

} // namespace

FolderWriter::FolderWriter(const std::string &folder)
    : m_folder(folder), m_root(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
}

bool FolderWriter::makeFolder(const EntryPath &path)
{
    return openFolder(path, true).isOpen();
}

FileDescriptor FolderWriter::makeFile(const EntryPath &path, FileKind kind)
{
    const FileDescriptor parent = openParent(path, true);
    if (!parent.isOpen())
        return {};
    return FileDescriptor(::openat(parent.get(), path.back().c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                   kind == FileKind::program ? programMode : plainMode));
}

bool FolderWriter::makeHardLink(const EntryPath &path, const EntryPath &existing)
{
    const FileDescriptor from = openParent(existing, false);
    const FileDescriptor to = openParent(path, true);
    struct stat status{};
    if (!from.isOpen() || !to.isOpen() ||
        ::fstatat(from.get(), existing.back().c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    if (!S_ISREG(status.st_mode)) {
        errno = ELOOP;
        return false;
    }
    return ::linkat(from.get(), existing.back().c_str(), to.get(), path.back().c_str(), 0) == 0;
}

bool FolderWriter::makeSymbolicLink(const EntryPath &path, const std::string &target)
{
    const FileDescriptor parent = openParent(path, true);
    if (!parent.isOpen() || ::symlinkat(target.c_str(), parent.get(), path.back().c_str()) != 0)
        return false;
    m_links.push_back(joined(path));
    return true;
}

bool FolderWriter::linksLeadInside() const
{
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::path root = fs::canonical(m_folder, failure);
    if (failure)
        return false;
    return std::all_of(m_links.begin(), m_links.end(), [&](const std::string &link) {
        std::error_code error;
        const fs::path place = fs::weakly_canonical(root / link, error);
        return !error &&
               std::mismatch(root.begin(), root.end(), place.begin(), place.end()).first == root.end();
    });
}

FileDescriptor FolderWriter::openParent(const EntryPath &path, bool create)
{
    if (path.empty()) {
        errno = EEXIST; // the folder itself
        return {};
    }
    return openFolder(EntryPath(path.begin(), path.end() - 1), create);
}

FileDescriptor FolderWriter::openFolder(const EntryPath &path, bool create)
{
    FileDescriptor folder(::fcntl(m_root.get(), F_DUPFD_CLOEXEC, 0));
    for (const std::string &name : path) {
        if (!folder.isOpen())
            break;
        if (create && ::mkdirat(folder.get(), name.c_str(), folderMode) != 0 && errno != EEXIST)
            return {};
        folder = FileDescriptor(::openat(folder.get(), name.c_str(), folderFlags));
    }
    return folder;
}

} // namespace morvane
