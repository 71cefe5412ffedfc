#pragma once

#include <QByteArrayView>
#include <QString>
#include <expected>

namespace morvane {

/// What a successful write has survived when the call returns.
enum class Durability {
    processCrash, ///< The new content is with the kernel; costs some 50 µs for a small file.
    powerLoss,    ///< The new content and its name are on the disk; may take as long as the disk needs.
};

/// What the user alone may read and write.
inline constexpr unsigned privateFile = 0600;

/// What becomes of a symbolic link in the file's place.
enum class LinkRule {
    replace, ///< The new file takes its place; what it led to stays as it was.
    follow,  ///< It stays, and the file that it leads to is replaced or created.
};

/// Replaces the file at `path` as a whole: a reader sees the old content or the new one, never a mixture, and
/// when writing fails the old file stands as it was. A temporary file in the same folder, with exactly the
/// given permission bits, is renamed over it; it is removed when the write fails. Nothing but a regular file
/// is ever replaced: a folder, a pipe or a device in its place fails the write. The folder must exist. Fails
/// with the system's reason ("No space left on device"); only a failure to bring the new name to the disk
/// comes after the content was replaced. Any thread; blocks.
std::expected<void, QString> writeFileAtomically(const QString &path, QByteArrayView bytes,
                                                 Durability durability = Durability::powerLoss,
                                                 unsigned permissions = privateFile,
                                                 LinkRule links = LinkRule::replace);

/// Brings a file written with `Durability::processCrash`, and its name, to the disk; links are followed.
/// Fails for anything but a regular file. Any thread; blocks.
std::expected<void, QString> syncFile(const QString &path);

/// Removes the temporary files that crashed writes left in a folder. Those of writes under way, in this
/// process or another, are locked and stay; where the file system knows no locks, those younger than an hour
/// stay. Any thread; blocks.
void removeAbandonedTemporaryFiles(const QString &folder);

/// Creates the folder, with what is missing above it, for the user alone (0700), and narrows one that exists;
/// what a link leads to may serve others too, and stays as it is. Fails with the system's reason. Any thread;
/// blocks.
std::expected<void, QString> ensurePrivateFolder(const QString &path);

} // namespace morvane
