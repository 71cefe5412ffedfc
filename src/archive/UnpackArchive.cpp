#include "archive/UnpackArchive.h"

#include "archive/FolderWriter.h"

#include <QFile>
#include <archive.h>
#include <archive_entry.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

using Kind = UnpackError::Kind;
using Result = std::expected<void, UnpackError>;

constexpr std::size_t readBlock = 128 * 1024;

Result failure(Kind kind, const QString &reason)
{
    return std::unexpected(UnpackError{kind, reason});
}

/// What the last call of the system says of the disk. That something stands in the way of an entry, or that a
/// link does, is the archive's own doing: the folder was empty.
Result diskFailure()
{
    const int error = errno;
    const QString reason = QString::fromLocal8Bit(::strerror(error));
    switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return failure(Kind::diskFull, reason);
    case EEXIST:
    case ELOOP:
    case ENOTDIR:
    case ENOENT:
    case ENAMETOOLONG:
        return failure(Kind::hostile, reason);
    default:
        return failure(Kind::disk, reason);
    }
}

/// One run through an archive.
class Unpacking {
public:
    explicit Unpacking(const UnpackOrder &order)
        : m_order(order), m_writer(QFile::encodeName(order.folder).toStdString()),
          m_archive(::archive_read_new())
    {
    }

    Result run()
    {
        const FileDescriptor file(
            ::open(QFile::encodeName(m_order.archive).constData(), O_RDONLY | O_CLOEXEC));
        if (!file.isOpen() || !m_writer.isOpen() || !m_archive)
            return failure(Kind::disk, u"the archive or its folder cannot be opened"_s);
        ::archive_read_support_filter_gzip(m_archive.get());
        ::archive_read_support_filter_zstd(m_archive.get());
        ::archive_read_support_format_tar(m_archive.get());
        if (::archive_read_open_fd(m_archive.get(), file.get(), readBlock) != ARCHIVE_OK)
            return damaged();
        while (true) {
            archive_entry *entry = nullptr;
            const int status = ::archive_read_next_header(m_archive.get(), &entry);
            if (status == ARCHIVE_EOF)
                break;
            if (status != ARCHIVE_OK && status != ARCHIVE_WARN)
                return damaged();
            if (++m_entries > m_order.maximumEntries)
                return failure(Kind::tooLarge, u"too many entries"_s);
            if (const Result taken = take(entry); !taken)
                return taken;
        }
        if (m_entries == 0)
            return failure(Kind::damaged, u"nothing is in it"_s);
        if (!m_writer.linksLeadInside())
            return failure(Kind::hostile, u"a link leads out"_s);
        return {};
    }

private:
    struct Free {
        void operator()(archive *reader) const { ::archive_read_free(reader); }
    };

    Result damaged()
    {
        const char *reason = ::archive_error_string(m_archive.get());
        return failure(Kind::damaged, QString::fromUtf8(reason ? reason : "no reason"));
    }

    /// The name in UTF-8, or in the bytes of the archive.
    static const char *first(const char *utf8, const char *bytes) { return utf8 ? utf8 : bytes; }

    Result take(archive_entry *entry)
    {
        const char *name = first(::archive_entry_pathname_utf8(entry), ::archive_entry_pathname(entry));
        const auto path = name ? entryPath(name) : std::nullopt;
        if (!path)
            return failure(Kind::hostile, u"a name leads out"_s);
        if (const char *existing =
                first(::archive_entry_hardlink_utf8(entry), ::archive_entry_hardlink(entry)))
            return takeHardLink(*path, existing);
        switch (::archive_entry_filetype(entry)) {
        case AE_IFDIR:
            return m_writer.makeFolder(*path) ? Result() : diskFailure();
        case AE_IFREG:
            return takeFile(*path, entry);
        case AE_IFLNK:
            return takeSymbolicLink(
                *path, first(::archive_entry_symlink_utf8(entry), ::archive_entry_symlink(entry)));
        default:
            return failure(Kind::hostile, u"neither file nor folder nor link"_s);
        }
    }

    Result takeHardLink(const EntryPath &path, const char *existing)
    {
        const auto target = entryPath(existing);
        if (!target)
            return failure(Kind::hostile, u"a hard link leads out"_s);
        return m_writer.makeHardLink(path, *target) ? Result() : diskFailure();
    }

    Result takeSymbolicLink(const EntryPath &path, const char *target)
    {
        if (!target || !staysInside(path, target))
            return failure(Kind::hostile, u"a link leads out"_s);
        return m_writer.makeSymbolicLink(path, target) ? Result() : diskFailure();
    }

    Result takeFile(const EntryPath &path, archive_entry *entry)
    {
        const auto kind = ::archive_entry_perm(entry) & S_IXUSR ? FolderWriter::FileKind::program
                                                                : FolderWriter::FileKind::plain;
        FileDescriptor file = m_writer.makeFile(path, kind);
        if (!file.isOpen())
            return diskFailure();
        const qint64 begin = m_bytes;
        while (true) {
            if (m_order.stop->load())
                return failure(Kind::stopped, {});
            const void *block = nullptr;
            std::size_t size = 0;
            la_int64_t offset = 0;
            const int status = ::archive_read_data_block(m_archive.get(), &block, &size, &offset);
            if (status == ARCHIVE_EOF)
                return finish(file, begin, offset);
            if (status != ARCHIVE_OK)
                return damaged();
            if (offset < 0 || !reserve(begin, offset, static_cast<qint64>(size)))
                return failure(Kind::tooLarge, u"too many bytes"_s);
            if (!writeAt(file.get(), static_cast<const char *>(block), size, offset))
                return diskFailure();
        }
    }

    /// Counts a block with the gap in front of it; false above the limit.
    bool reserve(qint64 begin, qint64 offset, qint64 size)
    {
        const qint64 left = m_order.maximumBytes - begin;
        if (offset > left || size > left - offset)
            return false;
        m_bytes = std::max(m_bytes, begin + offset + size);
        return true;
    }

    /// A file may end with a gap, which no block tells.
    Result finish(FileDescriptor &file, qint64 begin, qint64 length)
    {
        if (length < 0 || !reserve(begin, length, 0))
            return failure(Kind::tooLarge, u"too many bytes"_s);
        struct stat status{};
        if (::fstat(file.get(), &status) != 0 ||
            (status.st_size < length && ::ftruncate(file.get(), length) != 0) || !file.close())
            return diskFailure();
        return {};
    }

    static bool writeAt(int file, const char *bytes, std::size_t size, qint64 offset)
    {
        while (size > 0) {
            const ssize_t written = ::pwrite(file, bytes, size, offset);
            if (written < 0 && errno == EINTR)
                continue;
            if (written < 0)
                return false;
            bytes += written;
            offset += written;
            size -= static_cast<std::size_t>(written);
        }
        return true;
    }

    const UnpackOrder &m_order;
    FolderWriter m_writer;
    std::unique_ptr<archive, Free> m_archive;
    qint64 m_entries = 0;
    qint64 m_bytes = 0; ///< Of all files, gaps included.
};

} // namespace

std::expected<void, UnpackError> unpackArchive(const UnpackOrder &order)
{
    return Unpacking(order).run();
}

} // namespace morvane
