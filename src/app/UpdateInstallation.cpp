#include "app/UpdateInstallation.h"

#include "app/FriendlyError.h"
#include "app/Log.h"
#include "app/Status.h"
#include "async/Cancelled.h"
#include "async/Scheduler.h"
#include "async/Sleep.h"
#include "base/Overloaded.h"
#include "update/UpdateDMGDownloader.h"
#include "update/UpdateInstallError.h"
#include "update/UpdateService.h"

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {

namespace {

/// So that the last words can be heard.
constexpr auto beforeTheEnd = 800ms;
constexpr int spokenStep = 25;

} // namespace

UpdateInstallation::UpdateInstallation(Scheduler &scheduler, UpdateService &service, Status &status)
    : m_scheduler(scheduler), m_service(service), m_status(status)
{
}

void UpdateInstallation::begin(const UpdateInfo &update)
{
    using Phase = UpdateInstallPhase;
    std::visit(Overloaded{
                   [&](Phase::Idle) {
                       setPhase({Phase::Downloading{}});
                       m_scheduler.spawn(runUpdateInstall(update));
                   },
                   [](Phase::Downloading) {},
                   [](Phase::Verifying) {},
                   [](Phase::Installing) {},
                   [](const Phase::Failed &) {},
               },
               UpdateInstallPhase(m_phase).state);
}

Task<void> UpdateInstallation::runUpdateInstall(UpdateInfo update)
{
    std::shared_ptr<ImageFile> image;
    std::exception_ptr failure;
    try {
        co_await installSteps(std::move(update), &image);
    } catch (const Cancelled &) {
        throw;
    } catch (...) {
        failure = std::current_exception();
    }
    if (image)
        co_await UpdateDMGDownloader::discard(std::move(image));
    if (failure) {
        qCWarning(appLog) << "the update was not installed:" << kindOfFailure(failure);
        fail(friendlyError(failure));
        co_return;
    }
    m_status.announce(u"Restarting to finish the update."_s);
    co_await sleepFor(beforeTheEnd);
    m_service.terminate();
}

Task<void> UpdateInstallation::installSteps(UpdateInfo update, std::shared_ptr<ImageFile> *image)
{
    m_status.announce(u"Downloading the update."_s);
    *image = co_await m_service.downloadUpdateDMG(update.cacheBustedDownloadURL(),
                                                  [this](double fraction) { showProgress(fraction); });
    m_status.announce(u"Verifying the update."_s);
    setPhase({UpdateInstallPhase::Verifying{}});
    if (!m_service.isGenuine((*image)->image(), update)) {
        throw UpdateInstallError(
            u"The downloaded update did not pass its security check. Please download it from "
            "the website instead."_s);
    }
    m_status.announce(u"Installing the update. Morvane will restart in a moment."_s);
    setPhase({UpdateInstallPhase::Installing{}});
    co_await m_service.stageAndScheduleRelaunch((*image)->image().path);
}

void UpdateInstallation::showProgress(double fraction)
{
    const int percent = static_cast<int>(std::floor(std::clamp(fraction, 0.0, 1.0) * 100));
    if (std::exchange(m_percent, percent) == percent)
        return;
    setPhase({UpdateInstallPhase::Downloading{fraction}});
    if (percent % spokenStep == 0)
        m_status.announceProgress(u"Downloading the update, %1 percent done."_s.arg(percent));
}

void UpdateInstallation::fail(const QString &description)
{
    setPhase({UpdateInstallPhase::Failed{description}});
    m_status.announce(
        u"The update could not be installed. %1 You can still download it from the website."_s.arg(
            description));
    m_status.setStatusText(u"Update failed"_s);
}

void UpdateInstallation::setPhase(UpdateInstallPhase phase)
{
    m_phase = std::move(phase);
    Q_EMIT phaseChanged();
}

} // namespace morvane
