#pragma once

#include "async/Task.h"
#include "localmodel/LocalModelRuntime.h"

#include <QString>
#include <QStringList>

namespace morvane {

class HttpClient;

/// Brings the runtime from its site and puts it into Morvane's folder. Main thread; blocks nowhere.
class RuntimeInstaller {
public:
    /// `site` is an origin without a slash at the end, `dataFolder` Morvane's own; `http` outlives the
    /// installer.
    RuntimeInstaller(HttpClient &http, QString site, QString dataFolder);

    /// Downloads, unpacks and places the runtime, and gives the path of its program. The old state of the
    /// folder stands until all is there. Throws InstallError or Cancelled; a part of the download stays where
    /// it can be gone on with.
    Task<QString> install(LocalModelRuntime::ProgressCallback onProgress);

private:
    Task<QString> download(LocalModelRuntime::ProgressCallback onProgress);
    Task<void> downloadWithRetries(QString name, LocalModelRuntime::ProgressCallback onProgress);
    QString archivePath(const QString &name) const;

    HttpClient &m_http;
    QString m_site;
    QString m_dataFolder;
};

/// The names of the runtime's archive for a processor as Qt names it, the newer one first; empty for a
/// processor that there is none for.
QStringList runtimeArchives(const QString &processor);

} // namespace morvane
