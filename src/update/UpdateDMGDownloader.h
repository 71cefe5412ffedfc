#pragma once

#include "async/Task.h"
#include "update/ImageFile.h"

#include <QUrl>
#include <functional>
#include <memory>

namespace morvane {

class HttpClient;

/// Brings a disk image. Main thread; the disk is written off it.
class UpdateDMGDownloader {
public:
    /// What came so far, from 0 to 1; 0 while the size is not known.
    using Progress = std::function<void(double)>;

    static constexpr qint64 usualMaximumBytes = 4'000'000'000;

    /// `folder` is where the image goes; one above `maximumBytes` is refused. `http` outlives the downloader.
    UpdateDMGDownloader(HttpClient &http, QString folder, qint64 maximumBytes = usualMaximumBytes)
        : m_http(http), m_folder(std::move(folder)), m_maximumBytes(maximumBytes)
    {
    }

    /// Downloads the whole file, whatever the status of the answer: what is no image has another hash. Calls
    /// `onProgress` for every piece. Throws UpdateInstallError or Cancelled, and leaves nothing then.
    Task<std::shared_ptr<ImageFile>> download(QUrl url, Progress onProgress);

    /// Removes an image that was downloaded, off the main thread: a large one takes the disk a moment.
    static Task<void> discard(std::shared_ptr<ImageFile> image);

private:
    Task<void> receive(QUrl url, std::shared_ptr<ImageFile> file, Progress onProgress);

    HttpClient &m_http;
    const QString m_folder;
    const qint64 m_maximumBytes;
};

} // namespace morvane
