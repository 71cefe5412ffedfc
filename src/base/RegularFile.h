#pragma once

#include "base/FileDescriptor.h"

#include <QByteArray>
#include <QString>
#include <expected>

namespace morvane {

/// A regular file that is open for reading. Devices, sockets and pipes, which may block or never end, are
/// refused before anything is read of them. Blocks; any thread, one at a time.
class RegularFile {
public:
    enum class Links { follow, refuse };

    /// Fails with the system's reason, such as "Permission denied".
    static std::expected<RegularFile, QString> open(const char *path, Links links = Links::follow);

    /// In bytes, as the file system tells; the kernel's own files tell 0 and hold more.
    qint64 size() const { return m_size; }

    /// Stays this object's.
    int descriptor() const { return m_descriptor.get(); }

    /// Takes from others what they may do with the file, if it is the user's own and has no other name (a
    /// hard link).
    void makePrivate() const;

    /// Reads on into `buffer` until it is full or the file ends; answers how many bytes came. Fails with the
    /// system's reason.
    std::expected<qint64, QString> read(char *buffer, qint64 capacity);

    /// The whole file; as soon as there are more than `limit` bytes, the first `limit` + 1 of them.
    std::expected<QByteArray, QString> readUpTo(qint64 limit);

private:
    RegularFile(FileDescriptor descriptor, qint64 size) : m_descriptor(std::move(descriptor)), m_size(size) {}

    FileDescriptor m_descriptor;
    qint64 m_size;
};

/// Whether the path itself is a symbolic link, whatever it leads to. Any thread; blocks.
bool isLink(const char *path);

/// The text for an error number, as the system words it.
QString systemReason(int error);

} // namespace morvane
