#pragma once

#include "app/UpdateInstallPhase.h"
#include "async/Task.h"
#include "update/UpdateInfo.h"

#include <QObject>
#include <memory>

namespace morvane {

class ImageFile;
class Scheduler;
class Status;
class UpdateService;

/// Brings an update, puts it in the program's place and restarts the program. Once in a run of the program.
/// Main thread.
class UpdateInstallation : public QObject {
    Q_OBJECT
public:
    /// All of them outlive the object; the scheduler is shut down before it goes.
    UpdateInstallation(Scheduler &scheduler, UpdateService &service, Status &status);

    const UpdateInstallPhase &phase() const { return m_phase; }

    /// Starts installing. Only in the phase idle; in every other, a failure included, nothing happens.
    void begin(const UpdateInfo &update);

Q_SIGNALS:
    /// Another phase, or another whole percent.
    void phaseChanged();

private:
    Task<void> runUpdateInstall(UpdateInfo update);
    Task<void> installSteps(UpdateInfo update, std::shared_ptr<ImageFile> *image);
    void showProgress(double fraction);
    void fail(const QString &description);
    void setPhase(UpdateInstallPhase phase);

    Scheduler &m_scheduler;
    UpdateService &m_service;
    Status &m_status;
    UpdateInstallPhase m_phase;
    int m_percent = -1; ///< The last one that was told.
};

} // namespace morvane
