#include "net/PartialFile.h"

#include "base/AtomicFile.h"
#include "base/WriteWhole.h"
#include "net/DownloadError.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace morvane {

namespace {

[[noreturn]] void throwFailure(int error)
{
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    throw DownloadError(full ? DownloadError::Kind::diskFull : DownloadError::Kind::disk, 0,
                        QString::fromLocal8Bit(::strerror(error)));
}

/// A record is some hundred bytes; anything larger is none.
constexpr qint64 maximumRecordBytes = 64 * 1024;

} // namespace

void PartialFile::open()
{
    const QByteArray name = QFile::encodeName(m_path);
    m_file = FileDescriptor(
        ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, privateFile));
    if (!m_file.isOpen())
        throwFailure(errno);
    struct stat status{};
    if (::fstat(m_file.get(), &status) != 0)
        throwFailure(errno);
    if (!S_ISREG(status.st_mode))
        throwFailure(EEXIST);
}

std::optional<DownloadRecord> PartialFile::record() const
{
    QFile file(recordPath());
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return DownloadRecord::fromJson(file.read(maximumRecordBytes));
}

qint64 PartialFile::size() const
{
    struct stat status{};
    if (::fstat(m_file.get(), &status) != 0)
        throwFailure(errno);
    return status.st_size;
}

void PartialFile::begin(const DownloadRecord &record, qint64 from)
{
    // In this order a crash in between leaves a file without a record, or an empty one: both begin anew.
    if (from == 0) {
        QFile::remove(recordPath());
        if (::ftruncate(m_file.get(), 0) != 0)
            throwFailure(errno);
        if (!record.validator.isEmpty()) {
            const auto kept = writeFileAtomically(recordPath(), record.toJson(), Durability::processCrash);
            if (!kept)
                throw DownloadError(DownloadError::Kind::disk, 0, kept.error());
        }
    } else if (::ftruncate(m_file.get(), from) != 0) {
        throwFailure(errno);
    }
    if (::lseek(m_file.get(), from, SEEK_SET) < 0)
        throwFailure(errno);
}

void PartialFile::write(QByteArrayView bytes)
{
    if (!writeWhole(m_file.get(), bytes))
        throwFailure(errno);
}

void PartialFile::close()
{
    if (!m_file.close())
        throwFailure(errno);
}

void PartialFile::remove(const QString &path)
{
    QFile::remove(PartialFile(path).recordPath());
    QFile::remove(path);
}

} // namespace morvane
