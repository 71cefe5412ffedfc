#pragma once

#include <QByteArray>
#include <QString>
#include <QThreadPool>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace morvane {

/// A file of records, read and replaced as a whole on a thread of its own, in the order of the calls.
/// Failures are passed over: the next write replaces what is there. Main thread.
class RecordsFile {
public:
    /// Larger files count as unreadable.
    static constexpr qint64 maximumBytes = qint64(64) << 20;

    /// The folder is created for the user alone; where that fails, so do the writes.
    explicit RecordsFile(const QString &path);
    /// Finishes what was asked for.
    ~RecordsFile();
    RecordsFile(const RecordsFile &) = delete;
    RecordsFile &operator=(const RecordsFile &) = delete;

    /// Hands the content to `take` on the file's thread; nothing if it cannot be read.
    void read(std::function<void(std::optional<QByteArray>)> take);

    /// Writes what `content`, called on the file's thread, gives. Takes the place of a write that has not
    /// begun.
    void write(std::function<QByteArray()> content);

    /// Removes the file, and what waits to be written.
    void remove();

    /// Waits until all is done that was asked for.
    void finish();

private:
    /// Gives what is to be written; empty once it is no longer wanted.
    using Content = std::function<QByteArray()>;

    void writeWaiting(const std::shared_ptr<Content> &waiting);

    const QString m_path;
    std::mutex m_lock;
    /// Of the last write that has not begun, if anything may still take its place; under the lock.
    std::shared_ptr<Content> m_waiting;
    QThreadPool m_disk;
};

} // namespace morvane
