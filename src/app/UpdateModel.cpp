#include "app/UpdateModel.h"

#include "app/AgentRequest.h"
#include "app/FriendlyError.h"
#include "app/Log.h"
#include "app/Workspace.h"
#include "async/Cancelled.h"
#include "async/Scheduler.h"
#include "platform/UrlOpener.h"
#include "store/SettingsStore.h"
#include "update/UpdatePolicy.h"
#include "update/UpdateService.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

const QString dismissedKey = u"dismissedUpdateVersion"_s;

/// "1.2 build 7".
QString numbersOf(const UpdateInfo &update)
{
    return u"%1 build %2"_s.arg(update.version, QString::number(update.build));
}

QString dismissedValue(const UpdateInfo &update)
{
    return u"%1|%2"_s.arg(update.version, QString::number(update.build));
}

} // namespace

UpdateModel::UpdateModel(Scheduler &scheduler, SettingsStore &settings, UpdateService &service,
                         UrlOpener &urls, Workspace &workspace, const AgentRequest &request)
    : m_scheduler(scheduler), m_settings(settings), m_service(service), m_urls(urls), m_workspace(workspace),
      m_request(request), m_installation(scheduler, service, workspace.status)
{
    connect(&m_installation, &UpdateInstallation::phaseChanged, this,
            &UpdateModel::updateInstallPhaseChanged);
}

bool UpdateModel::showsUpdateBanner() const
{
    return m_availableUpdate && (isUpdateRequired() || m_settings.value(dismissedKey).toString() !=
                                                           dismissedValue(*m_availableUpdate));
}

void UpdateModel::startCheck()
{
    m_scheduler.spawn(checkForUpdates(Occasion::user));
}

Task<void> UpdateModel::checkForUpdates(Occasion occasion)
{
    if (m_isCheckingUpdate) {
        if (occasion == Occasion::user)
            m_workspace.status.announce(u"Already checking for updates."_s);
        co_return;
    }
    setChecking(true);
    const StatusLine line = m_request.isBusy() ? StatusLine::ofTheAgent : StatusLine::ours;
    std::optional<UpdateInfo> update;
    std::exception_ptr failure;
    try {
        update = co_await m_service.fetchLatest();
    } catch (const Cancelled &) {
        throw;
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure)
        tellFailure(failure, occasion, line);
    else if (isOnOffer(*update, m_service.current()))
        takeManifest(*update, occasion, line);
    else
        tellUpToDate(occasion, line);
    setChecking(false);
}

void UpdateModel::takeManifest(const UpdateInfo &update, Occasion occasion, StatusLine line)
{
    setAvailableUpdate(update);
    const QString numbers = numbersOf(update);
    if (isUpdateRequired()) {
        m_workspace.status.setStatusText(u"Update required: "_s + numbers);
        m_workspace.activity.log(u"Required update: Morvane %1."_s.arg(numbers), ActivityStep::Kind::error);
        m_workspace.status.announce(
            u"This update is required to continue. Please update Morvane to %1 now."_s.arg(numbers));
    } else {
        setStatusText(u"Morvane %1 is available"_s.arg(numbers), line);
        m_workspace.activity.log(u"Morvane %1 is available to download."_s.arg(numbers),
                                 ActivityStep::Kind::info);
        m_workspace.status.announce(u"Morvane %1 is available."_s.arg(numbers));
    }
    if (occasion == Occasion::user || isUpdateRequired())
        presentUpdateAlert(update);
}

void UpdateModel::tellUpToDate(Occasion occasion, StatusLine line)
{
    setAvailableUpdate(std::nullopt);
    setStatusText(u"Ready"_s, line);
    if (occasion != Occasion::user)
        return;
    m_workspace.status.announce(
        u"You are up to date. Morvane %1 is the latest version."_s.arg(m_service.current().version));
    setAlert(UpdateAlert{UpdateAlert::UpToDate{m_service.current()}});
}

void UpdateModel::tellFailure(const std::exception_ptr &failure, Occasion occasion, StatusLine line)
{
    qCInfo(appLog) << "the check for updates failed:" << kindOfFailure(failure);
    if (isUpdateRequired()) {
        const UpdateInfo update = *m_availableUpdate;
        setStatusText(u"Update required: %1 — connect to update"_s.arg(numbersOf(update)), line);
        m_workspace.status.announce(
            u"This update is required to continue. Connect to the internet and update "
            "Morvane to %1 now."_s.arg(numbersOf(update)));
        if (occasion == Occasion::user)
            presentUpdateAlert(update);
        return;
    }
    if (occasion != Occasion::user)
        return;
    const QString reason = friendlyError(failure);
    const QString beginning = u"Couldn't check for updates. "_s;
    m_workspace.activity.log(beginning, reason, ActivityStep::Kind::error);
    m_workspace.status.announce(beginning + reason);
    setAlert(UpdateAlert{UpdateAlert::CheckFailed{reason}});
}

void UpdateModel::presentUpdateAlert(const UpdateInfo &update)
{
    if (isUpdateRequired())
        setAlert(UpdateAlert{UpdateAlert::Required{update}});
    else
        setAlert(UpdateAlert{UpdateAlert::Available{update}});
}

void UpdateModel::installUpdateNow()
{
    if (m_availableUpdate)
        m_installation.begin(*m_availableUpdate);
}

void UpdateModel::downloadUpdate()
{
    if (!m_availableUpdate)
        return;
    const QString version = m_availableUpdate->version;
    m_urls.open(m_availableUpdate->url());
    m_workspace.activity.log(u"Opening the Morvane %1 download."_s.arg(version), ActivityStep::Kind::info);
    m_workspace.status.announce(u"Opening the download for Morvane %1."_s.arg(version));
}

void UpdateModel::dismissUpdateBanner()
{
    if (isUpdateRequired()) {
        m_workspace.status.announce(u"This update is required to continue. Please update Morvane now."_s);
        return;
    }
    if (!m_availableUpdate)
        return;
    m_settings.setValue(dismissedKey, dismissedValue(*m_availableUpdate));
    Q_EMIT changed();
    m_workspace.status.announce(u"Update reminder dismissed."_s);
}

void UpdateModel::installFromAlert()
{
    closeAlert();
    installUpdateNow();
}

void UpdateModel::downloadFromAlert()
{
    closeAlert();
    downloadUpdate();
    if (isUpdateRequired())
        m_workspace.status.announce(u"This update is required to continue. Please update now."_s);
}

void UpdateModel::closeAlert()
{
    setAlert(std::nullopt);
}

void UpdateModel::setStatusText(const QString &text, StatusLine line)
{
    if (line == StatusLine::ours)
        m_workspace.status.setStatusText(text);
}

void UpdateModel::setAvailableUpdate(const std::optional<UpdateInfo> &update)
{
    if (m_availableUpdate == update)
        return;
    m_availableUpdate = update;
    m_isRequired = update && morvane::isUpdateRequired(*update, m_service.current());
    Q_EMIT changed();
}

void UpdateModel::setAlert(const std::optional<UpdateAlert> &alert)
{
    m_alert = alert;
    Q_EMIT alertChanged();
}

void UpdateModel::setChecking(bool isChecking)
{
    m_isCheckingUpdate = isChecking;
    Q_EMIT isCheckingUpdateChanged();
}

} // namespace morvane
