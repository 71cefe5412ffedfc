#include "base/TemporaryFile.h"

#include "base/WriteWhole.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {
namespace {

/// Whether the file is ours: whoever clears a folder may lock and remove it in the moment in which it is new
/// and not yet locked. File systems without locks are trusted.
bool claim(int descriptor)
{
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return false;
    struct stat status{};
    return ::fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

} // namespace

TemporaryFile::TemporaryFile(const std::string &folder)
{
    constexpr int attempts = 100;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        m_path = folder + '/' + std::string(namePrefix) + "XXXXXX";
        m_file = FileDescriptor(::mkostemp(m_path.data(), O_CLOEXEC)); // 0600
        if (!m_file.isOpen() || claim(m_file.get()))
            return;
        m_file.close();
    }
    errno = EBUSY;
}

TemporaryFile::~TemporaryFile()
{
    if (m_file.isOpen() && !m_isRenamed)
        ::unlink(m_path.c_str());
}

bool TemporaryFile::setPermissions(unsigned permissions)
{
    return ::fchmod(m_file.get(), permissions) == 0;
}

bool TemporaryFile::write(QByteArrayView bytes)
{
    return writeWhole(m_file.get(), bytes);
}

bool TemporaryFile::sync()
{
    return syncDescriptor(m_file.get());
}

bool TemporaryFile::renameTo(const std::string &path)
{
    // The second descriptor is closed in place of the first, whose end would also end the lock.
    FileDescriptor second(::fcntl(m_file.get(), F_DUPFD_CLOEXEC, 0));
    m_isRenamed = second.isOpen() && second.close() && std::rename(m_path.c_str(), path.c_str()) == 0;
    return m_isRenamed;
}

bool syncDescriptor(int descriptor)
{
    int result = 0;
    do
        result = ::fsync(descriptor);
    while (result != 0 && errno == EINTR);
    return result == 0 || errno == EINVAL || errno == ENOTSUP;
}

} // namespace morvane
