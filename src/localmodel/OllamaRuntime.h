#pragma once

#include "localmodel/LocalModelRuntime.h"

#include <QString>
#include <QStringList>

namespace morvane {

class HttpClient;

/// A local Ollama server, found over its HTTP interface. It is used as it runs: this class neither installs
/// nor starts it, and says so when asked. Main thread.
class OllamaRuntime final : public LocalModelRuntime {
public:
    /// `serverBase` is the server's origin without a slash at the end. `http` must outlive the runtime.
    OllamaRuntime(HttpClient &http, QString serverBase, QString dataFolder);

    bool isBinaryInstalled() const override;
    Task<bool> isServerRunning() override;
    Task<QStringList> installedModels() override;
    Task<void> ensureRunning(ProgressCallback onProgress) override;
    Task<void> pull(QString model, ProgressCallback onProgress) override;

    /// Where the program may lie, in the order in which it is looked for.
    QStringList binaryCandidates() const;

private:
    /// The body of a GET, or nothing for any failure and any status but 200.
    Task<std::optional<QByteArray>> get(QString path);

    HttpClient &m_http;
    QString m_serverBase;
    QString m_dataFolder;
};

} // namespace morvane
