#pragma once

#include "app/Workspace.h"
#include "async/TaskHandle.h"
#include "model/AIConfiguration.h"
#include "model/LocalModelInfo.h"

#include <QObject>
#include <QStringList>
#include <exception>
#include <functional>
#include <optional>

namespace morvane {

class LocalModelRuntime;
class Scheduler;
class SettingsStore;
class TurnRunner;

/// Ties the local model's runtime to the application: what the windows show of it, its first installation,
/// and the message that waits for it. Main thread.
class LocalModelFlow : public QObject {
    Q_OBJECT
public:
    /// The model that the first installation brings.
    static constexpr auto standardModel = "qwen2.5";

    /// All of them outlive the flow; the scheduler is shut down before it goes. `machineSummary` gives one
    /// sentence on the machine.
    LocalModelFlow(Scheduler &scheduler, SettingsStore &settings, LocalModelRuntime &runtime,
                   Workspace &workspace, TurnRunner &turns, std::function<QString()> machineSummary);

    const LocalModelInfo &info() const { return m_info; }
    /// Empty while nothing is pulled; see installationEnded.
    const QString &pullingModel() const { return m_pullingModel; }
    const QStringList &installedModels() const { return m_installedModels; }

    /// Reads the state of the runtime anew, in the background.
    void refreshLocalModel();
    /// The same, and then installs what is missing; for a user who has just chosen the local model.
    void refreshThenInstall();
    /// Starts the installation unless it runs, is done, or another model is being pulled.
    void installLocalModelIfNeeded();
    /// Starts the installation for a message that waits; the handle ends both.
    TaskHandle<void> startInstallThenRespond();
    /// Cancels installation and pull.
    void cancelTasks();

Q_SIGNALS:
    void changed();
    /// What info().installing or pullingModel() told has ended, with or without a model. A message that came
    /// meanwhile waits for this and nothing else: whatever sets one of the two, a pull too, emits it exactly
    /// once when it ends, also when it fails or is cancelled, or that message waits for ever.
    void installationEnded();

private:
    Task<void> refresh();
    Task<void> refreshAndInstall();
    Task<void> installLocalModel();
    Task<void> installSteps();
    Task<void> warmUpLocalModel();
    void reportFailure(const std::exception_ptr &failure);
    void setProgress(const QString &label, std::optional<double> fraction);
    void log(const QString &text, ActivityStep::Kind kind) { m_workspace.activity.log(text, kind); }

    Scheduler &m_scheduler;
    SettingsStore &m_settings;
    LocalModelRuntime &m_runtime;
    Workspace &m_workspace;
    TurnRunner &m_turns;
    std::function<QString()> m_machineSummary;
    LocalModelInfo m_info;
    QString m_pullingModel;
    QStringList m_installedModels;
    std::optional<TaskHandle<void>> m_installTask;
};

} // namespace morvane
