#pragma once

#include "app/Workspace.h"
#include "async/TaskHandle.h"
#include "model/AIConfiguration.h"
#include "model/LocalModelInfo.h"

#include <QObject>
#include <QSet>
#include <QStringList>
#include <exception>
#include <functional>
#include <optional>
#include <variant>

namespace morvane {

class LocalModelRuntime;
class Scheduler;
class SettingsStore;
class TurnRunner;

/// Ties the local model's runtime to the application: what the windows show of it, its first installation,
/// further models, and the message that waits. One installation or pull at a time. Main thread.
class LocalModelFlow : public QObject {
    Q_OBJECT
public:
    /// The model that the first installation brings.
    static constexpr auto standardModel = "qwen2.5";

    struct Idle {};
    struct Installing {
        TaskHandle<void> task;
    };
    struct Pulling {
        QString model;
        TaskHandle<void> task;
    };
    /// Cancelled and on its way out. What is asked for meanwhile comes then.
    struct Ending {
        struct Nothing {};
        struct Install {};
        struct Pull {
            QString model;
        };
        std::variant<Nothing, Install, Pull> next;
    };
    using Phase = std::variant<Idle, Installing, Pulling, Ending>;

    /// Why an installation begins that nobody asked for; what comes later here asks for more.
    enum class Occasion {
        /// Each start of the program. Without a network it fails each time, and the failure says it all: that
        /// it was tried is not announced before something comes.
        programStart,
        /// The user has chosen the local model.
        providerChosen,
        /// The user is greeted, whatever the settings say.
        onboarding,
    };

    /// All of them outlive the flow; the scheduler is shut down before it goes. `machineSummary` gives one
    /// sentence on the machine.
    LocalModelFlow(Scheduler &scheduler, SettingsStore &settings, LocalModelRuntime &runtime,
                   Workspace &workspace, TurnRunner &turns, std::function<QString()> machineSummary);

    const LocalModelInfo &info() const { return m_info; }
    /// Empty while nothing is pulled; see installationEnded.
    QString pullingModel() const;
    const QStringList &installedModels() const { return m_installedModels; }
    /// Whether an installation or a pull goes on whose end can be waited for: installationEnded tells it.
    bool isWorking() const;

    /// Reads the state of the runtime anew, in the background.
    void refreshLocalModel();
    /// The same, and then installs what is missing, if the local model is the chosen one or the occasion says
    /// so.
    void refreshThenInstall(Occasion occasion);
    /// Starts the installation unless it runs, is done, or another model is being pulled.
    void installLocalModelIfNeeded();
    /// Starts the installation for a message that waits. Only while nothing works.
    void startInstallThenRespond();
    /// Downloads a model and makes it the chosen one, unless an installation or a pull goes on.
    void pullLocalModelIfNeeded(const QString &model);
    /// Deletes a model in the background, unless one is being pulled. Where it was the chosen one, another is
    /// chosen.
    void deleteLocalModel(const QString &model);
    /// Takes the chosen model out of the server's memory, in the background. The next message loads it again.
    void freeMemory();
    /// Cancels installation and pull, and what was to come after them.
    void cancelTasks();

Q_SIGNALS:
    void changed();
    /// What info().installing or pullingModel() told has ended, with or without a model. A message that came
    /// meanwhile waits for this and nothing else: whatever sets one of the two, a pull too, emits it exactly
    /// once when it ends, also when it fails or is cancelled, or that message waits for ever.
    void installationEnded();

private:
    /// When it is announced that an installation has begun.
    enum class Opening { atOnce, whenSomethingComes };

    Task<void> refresh();
    void installFor(Occasion occasion);
    Task<void> installLocalModel(Opening opening);
    Task<void> installSteps(Opening opening);
    Task<void> pullLocalModel(QString model);
    Task<void> pullSteps(QString model);
    Task<void> deleteModel(QString model);
    Task<void> unloadModel(QString model);
    Task<void> warmUpLocalModel();
    void install(Opening opening);
    void pull(const QString &model);
    void setPhase(Phase phase);
    /// The installation or pull of the phase is over: what was asked for meanwhile comes.
    void finishPhase();
    void reportFailure(const std::exception_ptr &failure, const QString &cancelled, const QString &failed);
    void tellRefusal(const QString &what, const std::exception_ptr &failure);
    void setReady(const QString &model);
    void setProgress(const QString &label, std::optional<double> fraction);
    QString wantedModel() const;
    void log(const QString &text, ActivityStep::Kind kind) { m_workspace.activity.log(text, kind); }

    Scheduler &m_scheduler;
    SettingsStore &m_settings;
    LocalModelRuntime &m_runtime;
    Workspace &m_workspace;
    TurnRunner &m_turns;
    std::function<QString()> m_machineSummary;
    LocalModelInfo m_info;
    QStringList m_installedModels;
    Phase m_phase;
    QSet<QString> m_deleting;
    int m_lastRefresh = 0;              ///< What an older one finds out is out of date.
    std::optional<Occasion> m_occasion; ///< For what the last refresh has to install afterwards.
};

} // namespace morvane
