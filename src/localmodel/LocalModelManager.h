#pragma once

#include "localmodel/LocalModelRuntime.h"
#include "localmodel/RuntimeInstaller.h"

#include <QString>
#include <QStringList>
#include <functional>

namespace morvane {

class HttpClient;

/// Makes the Ollama runtime available: finds or installs its program, starts its server, and pulls, lists and
/// deletes models by running the program. Main thread.
class LocalModelManager final : public LocalModelRuntime {
public:
    struct Surroundings {
        QString serverBase;                    ///< The server's origin, without a slash at the end.
        QString site;                          ///< Where the runtime is downloaded from; the same form.
        QString dataFolder;                    ///< Morvane's own.
        QStringList candidates;                ///< See binaryCandidates().
        std::function<qint64()> freeDiskSpace; ///< Bytes, -1 if unknown; called off the main thread.
    };

    /// `http` must outlive the manager.
    LocalModelManager(HttpClient &http, Surroundings surroundings);

    bool isBinaryInstalled() const override;
    Task<bool> isServerRunning() override;
    Task<QStringList> installedModels() override;
    Task<void> requireFreeDiskSpace(qint64 bytes, QString what) override;
    Task<void> ensureRunning(ProgressCallback onProgress) override;
    Task<void> pull(QString model, ProgressCallback onProgress) override;
    Task<void> remove(QString model) override;
    Task<void> unload(QString model) override;

private:
    Task<bool> probe();
    Task<void> startServerDetached(QString path);
    Task<void> waitForServer();
    Task<void> runOnModel(QString command, QString model, QString failure);

    HttpClient &m_http;
    Surroundings m_surroundings;
    RuntimeInstaller m_installer;
    QString m_lastAnswer; ///< What the last probe found in the server's place, for the log.
};

} // namespace morvane
