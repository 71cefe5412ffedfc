#pragma once

#include "async/Task.h"

#include <QString>
#include <QStringList>
#include <exception>
#include <functional>
#include <optional>

namespace morvane {

/// A failure of the local model's setup, with a finished sentence for the user.
class InstallError : public std::exception {
public:
    explicit InstallError(const QString &message) : m_message(message), m_what(message.toUtf8()) {}

    const QString &message() const { return m_message; }
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QString m_message;
    QByteArray m_what;
};

/// What the application asks of the local model's runtime. Main thread.
class LocalModelPort {
public:
    /// A line to show, and how far the work is (0 to 1, absent when that is not known).
    using ProgressCallback = std::function<void(const QString &label, std::optional<double> fraction)>;

    virtual ~LocalModelPort() = default;

    virtual bool isBinaryInstalled() const = 0;
    virtual Task<bool> isServerRunning() = 0;
    /// Names without ":latest"; empty when they cannot be had.
    virtual Task<QStringList> installedModels() = 0;
    /// Makes the server run, installing it if needed. Throws InstallError or Cancelled.
    virtual Task<void> ensureRunning(ProgressCallback onProgress) = 0;
    /// Downloads a model. Throws InstallError or Cancelled.
    virtual Task<void> pull(QString model, ProgressCallback onProgress) = 0;
};

} // namespace morvane
