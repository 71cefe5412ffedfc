#pragma once

#include "async/Task.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace morvane {

/// The program that runs models on this computer. Main thread.
class LocalModelRuntime {
public:
    /// A line to show, and how far the work is (0 to 1, absent when that is not known).
    using ProgressCallback = std::function<void(const QString &label, std::optional<double> fraction)>;

    virtual ~LocalModelRuntime() = default;

    virtual bool isBinaryInstalled() const = 0;
    virtual Task<bool> isServerRunning() = 0;
    /// Names without ":latest"; empty when they cannot be had.
    virtual Task<QStringList> installedModels() = 0;
    /// Makes the server run, installing it if needed. Throws InstallError or Cancelled.
    virtual Task<void> ensureRunning(ProgressCallback onProgress) = 0;
    /// Downloads a model. Throws InstallError or Cancelled. Whoever shows it as under way tells its end by
    /// LocalModelFlow::installationEnded, which a message may wait for.
    virtual Task<void> pull(QString model, ProgressCallback onProgress) = 0;
};

} // namespace morvane
