#pragma once

#include "async/Task.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace morvane {

/// The program that runs models on this computer. Main thread; nothing here blocks it. What fails throws
/// InstallError, whose message is for the user; what is cancelled throws Cancelled.
class LocalModelRuntime {
public:
    /// A line to show, and how far the work is (0 to 1, absent when that is not known).
    using ProgressCallback = std::function<void(const QString &label, std::optional<double> fraction)>;

    virtual ~LocalModelRuntime() = default;

    virtual bool isBinaryInstalled() const = 0;
    virtual Task<bool> isServerRunning() = 0;
    /// Names without ":latest"; empty when they cannot be had.
    virtual Task<QStringList> installedModels() = 0;
    /// Fails if less than `bytes` is free; `what` completes "Not enough free disk space to …".
    virtual Task<void> requireFreeDiskSpace(qint64 bytes, QString what) = 0;
    /// Makes the server run, installing it if needed. What has been downloaded stays when it is cancelled,
    /// and is gone on with the next time.
    virtual Task<void> ensureRunning(ProgressCallback onProgress) = 0;
    /// Downloads a model. What has been downloaded stays when it is cancelled. Whoever shows it as under way
    /// tells its end by LocalModelFlow::installationEnded, which a message may wait for.
    virtual Task<void> pull(QString model, ProgressCallback onProgress) = 0;
    /// Deletes a model from the disk.
    virtual Task<void> remove(QString model) = 0;
    /// Takes a model out of memory. The next request loads it again.
    virtual Task<void> unload(QString model) = 0;
};

} // namespace morvane
