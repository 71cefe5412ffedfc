#pragma once

#include "update/RunningBundle.h"
#include "update/UpdateChecker.h"
#include "update/UpdateDMGDownloader.h"
#include "update/UpdateHost.h"
#include "update/UpdateService.h"

namespace morvane {

class BundleInstallation;

/// Updates from the update host, into the bundle that runs.
class HostedUpdates final : public UpdateService {
public:
    /// `http` outlives the object; `downloads` is the folder for images, `terminate` ends the program.
    HostedUpdates(HttpClient &http, UpdateHost host, ProgramVersion current, RunningBundle bundle,
                  QString downloads, std::function<void()> terminate);
    ~HostedUpdates() override;

    const ProgramVersion &current() const override { return m_current; }
    Task<UpdateInfo> fetchLatest() override { return m_checker.fetchLatest(); }
    Task<std::shared_ptr<ImageFile>> downloadUpdateDMG(QUrl url,
                                                       std::function<void(double)> onProgress) override;
    bool isGenuine(const UpdateImage &image, const UpdateInfo &update) const override;
    Task<void> stageAndScheduleRelaunch(QString image) override;
    void terminate() override { m_terminate(); }

    /// Removes in the background what earlier updates left.
    Task<void> removeRemains() const;

private:
    const UpdateHost m_host;
    const ProgramVersion m_current;
    const RunningBundle m_bundle;
    const QString m_downloads;
    const std::function<void()> m_terminate;
    UpdateChecker m_checker;
    UpdateDMGDownloader m_downloader;
    std::shared_ptr<BundleInstallation> m_installation; ///< Until the end of the process.
};

} // namespace morvane
