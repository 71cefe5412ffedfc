#pragma once

#include "base/DefaultsFile.h"
#include "model/Reminder.h"

#include <QSet>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

namespace morvane {

/// The reminders that have not come yet, as they lie in the user defaults under "pendingReminders". The
/// program that runs and the one that delivers reminders without it share the list: whoever takes a reminder
/// out is the only one who gets it. Any thread; blocks for file accesses.
class PendingReminders {
public:
    /// `path` is the file of the user defaults. Where another program changes it, changes wait for
    /// `patience`.
    explicit PendingReminders(const QString &path,
                              std::chrono::milliseconds patience = DefaultsFile::updateLimit);
    ~PendingReminders();
    PendingReminders(const PendingReminders &) = delete;
    PendingReminders &operator=(const PendingReminders &) = delete;

    /// As stored, without what was taken. Empty where there is none or its bytes cannot be understood; the
    /// next change replaces those. Only reads: whoever watches the folder may ask at every change in it.
    QList<Reminder> list();

    /// Tries once more to remove what was taken and could not be removed; the next start would find it. False
    /// if it is still there. The next change and the end of this object try it too.
    bool removeTaken();

    /// Appends a reminder and brings it to the disk. False if it could not be stored.
    bool add(const Reminder &reminder);

    /// Takes the reminder out; nothing if it is not there any more. One that can be read but not removed, as
    /// on a full disk, is given once by this object all the same: better twice than never.
    std::optional<Reminder> take(QUuid id);

    /// Takes out the first whose identifier, in its upper-case text form, begins with exactly this.
    std::optional<Reminder> takeByPrefix(const QString &prefix);

    /// Calls `cleanUp` if no reminder is pending, and keeps others from adding one before it has returned.
    /// Not if another keeps changing the file.
    void ifEmpty(const std::function<void()> &cleanUp);

private:
    bool change(const std::function<void(QList<Reminder> &)> &changeList);
    bool changeLocked(const std::function<void(QList<Reminder> &)> &changeList,
                      std::chrono::milliseconds limit);
    template <class Matches> std::optional<Reminder> takeFirst(Matches matches);
    QList<Reminder> decoded(const QVariantMap &values) const;

    DefaultsFile m_file;
    const std::chrono::milliseconds m_patience;
    std::mutex m_lock;
    QList<Reminder> m_read;                 ///< What the file held, as long as it is the same file.
    std::optional<FileIdentity> m_identity; ///< Of the file that was read.
    QSet<QUuid> m_taken; ///< Given away, but still in the file, which could not be written.
};

} // namespace morvane
