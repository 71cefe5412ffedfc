#pragma once

#include "browser/pages/BrowserEngine.h"
#include "ui/sheets/AnswerGuard.h"

#include <QObject>
#include <QString>
#include <QWebEngineProfile>
#include <vector>

class QWebEngineDownloadRequest;

namespace morvane {

class EngineDownload;
class EngineWebPage;

/// The web engine with the one profile of all pages, which is kept on the disk.
class EngineFactory final : public WebPageFactory {
public:
    /// Starts the engine.
    explicit EngineFactory(const EngineOptions &options);
    ~EngineFactory() override;

    std::unique_ptr<WebPage> makePage() override;
    void removeAllSiteData() override;

private:
    void takeNewCache();
    void download(QWebEngineDownloadRequest &request);

    QString m_folder;
    SteadyNow m_now;
    int m_caches = 0; ///< That were taken in the place of the first.
    QWebEngineProfile m_profile;
    QObject m_pages; ///< Has those of the engine, which end a little after ours.
    std::vector<QPointer<EngineWebPage>> m_ours;
    std::vector<std::weak_ptr<EngineDownload>> m_downloads;
};

} // namespace morvane
