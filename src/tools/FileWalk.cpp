#include "tools/FileWalk.h"

#include "base/FileDescriptor.h"

#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace morvane {
namespace {

FileWalk::Kind kindOf(const std::string &path, unsigned char type)
{
    if (type == DT_UNKNOWN) { // Some file systems do not tell.
        struct stat status{};
        if (::lstat(path.c_str(), &status) == 0)
            type = IFTODT(status.st_mode);
    }
    switch (type) {
    case DT_REG:
        return FileWalk::Kind::regularFile;
    case DT_DIR:
        return FileWalk::Kind::folder;
    default:
        return FileWalk::Kind::other;
    }
}

} // namespace

FileWalk::FileWalk(std::string root) : m_path(std::move(root))
{
    if (!m_path.ends_with('/'))
        m_path += '/';
    m_rootLength = m_path.size();
    enter(Links::follow);
}

bool FileWalk::next()
{
    if (m_kind == Kind::folder && m_path.size() > m_rootLength)
        enter(Links::refuse);
    while (!m_levels.empty()) {
        Level &level = m_levels.back();
        if (level.position == level.names.size()) {
            m_levels.pop_back();
            continue;
        }
        const char *const entry = level.names.data() + level.position;
        const std::size_t nameLength = std::strlen(entry + 1);
        level.position += nameLength + 2;
        m_path.resize(level.pathLength);
        m_path.append(entry + 1, nameLength);
        m_kind = kindOf(m_path, static_cast<unsigned char>(*entry));
        return true;
    }
    return false;
}

FileWalk::Entry FileWalk::entry() const
{
    const std::string_view path = m_path;
    return {path, path.substr(m_rootLength), m_kind};
}

void FileWalk::enter(Links links)
{
    // Reading a folder at once leaves one folder open at a time, however deep the tree is.
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (links == Links::refuse ? O_NOFOLLOW : 0);
    FileDescriptor descriptor(::open(m_path.c_str(), flags));
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(
        descriptor.isOpen() ? ::fdopendir(descriptor.get()) : nullptr, &::closedir);
    if (!folder)
        return;
    descriptor.release(); // now the stream's
    if (!m_path.ends_with('/'))
        m_path += '/';
    Level level;
    level.pathLength = m_path.size();
    while (const dirent *const read = ::readdir(folder.get())) {
        const std::string_view name = read->d_name;
        // Of names that begin with ".", only "." and ".." are not hidden, and those are no entries.
        if (name.starts_with('.'))
            continue;
        level.names.push_back(static_cast<char>(read->d_type));
        level.names.insert(level.names.end(), name.data(), name.data() + name.size() + 1);
    }
    m_levels.push_back(std::move(level));
}

} // namespace morvane
