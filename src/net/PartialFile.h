#pragma once

#include "base/FileDescriptor.h"
#include "net/DownloadRecord.h"

#include <QByteArrayView>
#include <QString>

namespace morvane {

/// A file that is being downloaded, with the record that lets a later download go on with it. Every function
/// throws DownloadError where the disk fails. One thread at a time; blocks.
class PartialFile {
public:
    explicit PartialFile(QString path) : m_path(std::move(path)) {}

    /// Opens or creates the file, for the user alone. A link in its place is no file of ours.
    void open();
    /// What is known of the part that is there; nothing if it is of no use.
    std::optional<DownloadRecord> record() const;
    qint64 size() const;

    /// Keeps the first `from` bytes; the next write goes behind them. A record without a validator is not
    /// kept, so that no later download takes the file for a part of anything.
    void begin(const DownloadRecord &record, qint64 from);
    void write(QByteArrayView bytes);
    /// Makes sure that no write failed late.
    void close();

    /// Whether a later download can go on with the file.
    static bool canBeResumed(const QString &path) { return PartialFile(path).record().has_value(); }
    /// Removes the file and its record.
    static void remove(const QString &path);

private:
    QString recordPath() const { return m_path + QStringLiteral(".json"); }

    QString m_path;
    FileDescriptor m_file;
};

} // namespace morvane
