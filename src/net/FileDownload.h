#pragma once

#include "async/Task.h"

#include <QString>
#include <QUrl>
#include <functional>
#include <optional>

namespace morvane {

class HttpClient;

/// A file to be brought from a server.
struct DownloadOrder {
    QUrl url; ///< Where it is https, no redirect leads to anything else.
    /// Where it grows, in a folder that exists. What an earlier download of the same address left there is
    /// gone on with, as long as the server still has that very file. PartialFile::remove takes it away with
    /// its record.
    QString path;
    qint64 maximumBytes = 0; ///< A larger file is refused.
    /// Bytes so far, those of earlier downloads included, and of the whole file. For every piece that has
    /// been written, thousands of times a second.
    std::function<void(qint64 received, std::optional<qint64> total)> onProgress;
};

/// Brings the whole file, or throws DownloadError, TransportError or Cancelled; what has come stays then.
/// After a TransportError the same order goes on where this one ended, unless the server tells nothing that a
/// version of the file can be known by. `http` outlives the task. Main thread; the disk is written off it.
Task<void> downloadFile(HttpClient *http, DownloadOrder order);

} // namespace morvane
