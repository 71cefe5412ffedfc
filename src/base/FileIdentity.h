#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

namespace morvane {

/// What tells one state of a file from another without reading it: a file that was replaced or written to
/// has another identity.
struct FileIdentity {
    quint64 device = 0;
    quint64 inode = 0;
    qint64 modifiedNanoseconds = 0; ///< Since 1970.
    qint64 changedNanoseconds = 0;  ///< Since 1970; moves also when the modification time is set back.
    qint64 size = 0;

    bool operator==(const FileIdentity &) const = default;

    /// Of the file that a path leads to, links followed; nothing if there is none or it is no regular file.
    static std::optional<FileIdentity> ofPath(const QString &path);

    /// Of an open file; nothing if it is no regular file.
    static std::optional<FileIdentity> ofDescriptor(int descriptor);
};

} // namespace morvane
