#pragma once

#include "base/FileDescriptor.h"
#include "base/FileIdentity.h"

#include <QString>
#include <QVariantMap>
#include <chrono>
#include <functional>
#include <optional>

namespace morvane {

/// The file of the user defaults on the disk: an INI file (0600, its folder 0700; see IniReader), which
/// several threads and programs read and change. It is replaced as a whole, so that a reader needs no lock;
/// whoever changes it holds the lock from before reading to after writing. A link in its place is followed,
/// for users who keep their settings elsewhere. Holds no values itself. Any thread, which it blocks for file
/// accesses.
class DefaultsFile {
public:
    /// What the file held at one moment.
    struct Content {
        QVariantMap values;                   ///< By key; "group/key" below a section other than [General].
        std::optional<FileIdentity> identity; ///< Nothing for a missing file, or for what is no file.
        bool isDamaged = false; ///< It could not be read whole; the values are what could be made out.
    };

    /// The right to change the file; other threads and programs wait for it. Ends with the object.
    class Lock {
    public:
        /// False if another held the lock for the whole time. A file system without locks gives it at once.
        bool isHeld() const { return m_isHeld; }

    private:
        friend class DefaultsFile;
        FileDescriptor m_folder;
        bool m_isHeld = false;
    };

    /// Larger ones are damaged, and are not written, since the start waits until the file is read. In bytes;
    /// a usual one has some thousand.
    static constexpr qint64 maximumBytes = 8 * 1024 * 1024;

    /// Changes take some tenths of a millisecond; whoever holds the lock for longer waits for a slow disk, or
    /// hangs.
    static constexpr std::chrono::milliseconds updateLimit{20000};

    explicit DefaultsFile(QString path);

    const QString &path() const { return m_path; }

    /// What the file holds now; no values for a missing or empty one. A pipe or a device is not read; a file
    /// that may not be read is damaged.
    Content read() const;

    /// Takes what others may do with the file away from them, and removes what crashed writes left.
    void tidy() const;

    /// Waits for the lock, at most for `limit`. Creates the folder where it is missing.
    Lock lock(std::chrono::milliseconds limit) const;

    /// Replaces the file and tells its identity; nothing if that failed, and the old file then stands. The
    /// new content is with the kernel when the call returns (see syncFile). Only with the lock held.
    std::optional<FileIdentity> write(const QVariantMap &values) const;

    /// Gives a damaged file ".damaged" behind its name, or ".damaged-2" and so on where something stands
    /// under that one; a link stays, and what it leads to is moved. False if the file stays where it is and
    /// must therefore not be replaced. Only with the lock held.
    bool setAside() const;

    /// Reads, changes and writes the file under the lock, for which it waits at most for `limit`. A damaged
    /// file is set aside, and what could be read of it goes on. False if another held the lock for so long,
    /// or the file could not be set aside or written: it then stands as it was, whatever was made of its
    /// values.
    bool update(const std::function<void(QVariantMap &values)> &change,
                std::chrono::milliseconds limit = updateLimit) const;

private:
    QString m_path;
};

} // namespace morvane
