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

/// Replaces the file at `path` as a whole: a reader sees the old content or the new one, never a mixture, and
/// when writing fails the old file stands as it was. A temporary file in the same folder, with exactly the
/// given permission bits, is renamed over it; it is removed when the write fails. A symbolic link is
/// followed. The folder must exist. Fails with the system's reason ("No space left on device"); only a
/// failure to bring the new name to the disk comes after the content was replaced. Any thread; blocks.
std::expected<void, QString> writeFileAtomically(const QString &path, QByteArrayView bytes,
                                                 Durability durability = Durability::powerLoss,
                                                 unsigned permissions = privateFile);

/// Brings a file written with `Durability::processCrash`, and its name, to the disk. Any thread; blocks.
std::expected<void, QString> syncFile(const QString &path);

/// Removes the temporary files that crashed writes left in a folder: those older than an hour, so that no
/// write under way in another process is touched. Any thread; blocks.
void removeAbandonedTemporaryFiles(const QString &folder);

/// Creates the folder, with what is missing above it, for the user alone (0700), and narrows one that exists.
/// Fails with the system's reason. Any thread; blocks.
std::expected<void, QString> ensurePrivateFolder(const QString &path);

} // namespace morvane
