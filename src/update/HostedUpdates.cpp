#include "update/HostedUpdates.h"

#include "async/OffMain.h"
#include "base/ChildProcess.h"
#include "update/BundleInstallation.h"
#include "update/RelaunchEnvironment.h"
#include "update/UpdateInstallError.h"
#include "update/UpdateRemains.h"
#include "update/UpdateSignature.h"

namespace morvane {

HostedUpdates::HostedUpdates(HttpClient &http, UpdateHost host, ProgramVersion current, RunningBundle bundle,
                             QString downloads, std::function<void()> terminate)
    : m_host(std::move(host)), m_current(std::move(current)), m_bundle(std::move(bundle)),
      m_downloads(std::move(downloads)), m_terminate(std::move(terminate)), m_checker(http, m_host),
      m_downloader(http, m_downloads)
{
}

HostedUpdates::~HostedUpdates() = default;

Task<std::shared_ptr<ImageFile>> HostedUpdates::downloadUpdateDMG(QUrl url,
                                                                  std::function<void(double)> onProgress)
{
    return m_downloader.download(std::move(url), std::move(onProgress));
}

bool HostedUpdates::isGenuine(const UpdateImage &image, const UpdateInfo &update) const
{
    return update.sha256.toLower().toUtf8() == image.sha256 &&
           (m_host.publicKey.isEmpty() || isSignedBy(m_host.publicKey, update));
}

Task<void> HostedUpdates::stageAndScheduleRelaunch(QString image)
{
    struct End {
        BundleInstallation::Result result;
        std::shared_ptr<BundleInstallation> kept;
    };
    End end = co_await runOffMain([bundle = m_bundle, image = std::move(image)] {
        auto installation = std::make_shared<BundleInstallation>(bundle);
        auto result = installation->replace(image);
        if (result)
            result = installation->scheduleRelaunch(relaunchEnvironment(currentEnvironment()));
        // What has changed nothing cleans up after itself here.
        return End{result, installation->hasMovedOldApp() ? installation : nullptr};
    });
    m_installation = std::move(end.kept);
    if (!end.result)
        throw UpdateInstallError(end.result.error());
}

Task<void> HostedUpdates::removeRemains() const
{
    return runOffMain(
        [bundle = m_bundle, downloads = m_downloads] { removeUpdateRemains(bundle, downloads); });
}

} // namespace morvane
