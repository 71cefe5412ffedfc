#pragma once

#include "app/UpdateAlert.h"
#include "app/UpdateInstallation.h"
#include "async/Task.h"

#include <QObject>
#include <optional>

namespace morvane {

class AgentRequest;
class Scheduler;
class SettingsStore;
class UpdateService;
class UrlOpener;
struct Workspace;

/// What is known of a newer version, and what the user can do about it: the windows show it, and a required
/// one stops new requests. Main thread.
class UpdateModel : public QObject {
    Q_OBJECT
public:
    /// Who wants to know.
    enum class Occasion {
        programStart, ///< Nobody: what goes wrong is not told.
        user,
    };

    /// All of them outlive the model; the scheduler is shut down before it goes. `request` is the agent's,
    /// which has the status line to itself while it works.
    UpdateModel(Scheduler &scheduler, SettingsStore &settings, UpdateService &service, UrlOpener &urls,
                Workspace &workspace, const AgentRequest &request);

    const std::optional<UpdateInfo> &availableUpdate() const { return m_availableUpdate; }
    bool isCheckingUpdate() const { return m_isCheckingUpdate; }
    /// Whether an update is known without which this build must not go on working.
    bool isUpdateRequired() const { return m_isRequired; }
    bool showsUpdateBanner() const;
    /// What the user is to be told, until they have answered.
    const std::optional<UpdateAlert> &alert() const { return m_alert; }
    const UpdateInstallPhase &updateInstallPhase() const { return m_installation.phase(); }

    /// Asks the update host. Never throws anything but Cancelled; while a check goes on nothing happens.
    Task<void> checkForUpdates(Occasion occasion);
    /// The same as a task of its own, for the user.
    void startCheck();

    /// Replaces the program by the update, once in a run of the program.
    void installUpdateNow();
    /// Shows the image's address in the browser.
    void downloadUpdate();
    /// Hides the banner until there is another update. A required one stays.
    void dismissUpdateBanner();

    /// The answers to an alert.
    void installFromAlert();
    void downloadFromAlert();
    void closeAlert();

Q_SIGNALS:
    /// Another update is known, or none, or the banner was dismissed.
    void changed();
    void isCheckingUpdateChanged();
    void updateInstallPhaseChanged();
    void alertChanged();

private:
    enum class StatusLine { ours, ofTheAgent };

    void takeManifest(const UpdateInfo &update, Occasion occasion, StatusLine line);
    void tellUpToDate(Occasion occasion, StatusLine line);
    void tellFailure(const std::exception_ptr &failure, Occasion occasion, StatusLine line);
    void setStatusText(const QString &text, StatusLine line);
    void presentUpdateAlert(const UpdateInfo &update);
    void setAvailableUpdate(const std::optional<UpdateInfo> &update);
    void setAlert(const std::optional<UpdateAlert> &alert);
    void setChecking(bool isChecking);

    Scheduler &m_scheduler;
    SettingsStore &m_settings;
    UpdateService &m_service;
    UrlOpener &m_urls;
    Workspace &m_workspace;
    const AgentRequest &m_request;
    UpdateInstallation m_installation;
    std::optional<UpdateInfo> m_availableUpdate;
    bool m_isRequired = false; ///< Whether that one is.
    std::optional<UpdateAlert> m_alert;
    bool m_isCheckingUpdate = false;
};

} // namespace morvane
