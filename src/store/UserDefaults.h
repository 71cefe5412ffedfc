#pragma once

#include "base/DefaultsFile.h"

#include <QMap>
#include <QString>
#include <QThreadPool>
#include <QTimer>
#include <QVariantMap>
#include <chrono>
#include <optional>

namespace morvane {

/// The key-value file behind the settings: an INI file (0600, its folder 0700; see DefaultsFile).
///
/// `write` hands every change to the kernel before it returns, so that a crash of the program loses nothing.
/// Within a second a thread of its own brings it to the disk: a flush takes up to tens of milliseconds, and
/// writes during a flush wait for it, so that there is one for a burst of changes and none on the main
/// thread. A change that another program or thread made to the file in the meantime is kept, and a file that
/// is gone or empty is written anew. While another one changes the file, and does not end within
/// milliseconds, the changes wait in memory and are written soon after. A file that cannot be read or has
/// lines that cannot be understood is set aside as "{path}.damaged", and never replaced where that fails.
/// Main thread.
class UserDefaults {
public:
    /// Reads the file; a missing one has no values.
    explicit UserDefaults(QString path);

    /// Waits until what was written is on the disk.
    ~UserDefaults();

    /// Whether the key has a value, be it an empty one.
    bool contains(const QString &key) const { return m_values.contains(key); }

    /// The value: text, list of texts or bytes; numbers and booleans come back as text that converts. A list
    /// of one comes back as a text and an empty list as an invalid value, both of which convert to the list.
    QVariant value(const QString &key) const { return m_values.value(key); }

    /// Changes a value in memory.
    void set(const QString &key, const QVariant &value);
    void remove(const QString &key);

    /// Writes what changed since the last time, nothing if nothing did. False if the file could not be
    /// written now; the changes then go with the next write.
    bool write();

private:
    bool writeWithin(std::chrono::milliseconds limit);
    void readFirst();
    bool adoptForeignChanges();

    DefaultsFile m_file;
    QVariantMap m_values;
    QMap<QString, std::optional<QVariant>> m_changes; ///< Not yet written; nothing for a removed key.
    std::optional<FileIdentity> m_identity;           ///< Of the file as we last read or wrote it.
    QTimer m_syncTimer;
    QTimer m_retryTimer; ///< Runs while changes wait for another one's lock.
    QThreadPool m_disk;
};

} // namespace morvane
