#pragma once

#include "async/TaskHandle.h"
#include "model/AIConfiguration.h"
#include "model/APIMessage.h"

#include <QList>
#include <QObject>
#include <QString>
#include <optional>
#include <variant>

namespace morvane {

class AgentLoop;
class BrowserWindowPort;
class LocalModelFlow;
class NotificationPort;
class RequestConfiguration;
class Scheduler;
class SettingsStore;
struct Workspace;

/// The work on a message: from the moment it stands in the transcript to its finished, failed or cancelled
/// answer. One at a time. Main thread.
class AgentRequest : public QObject {
    Q_OBJECT
public:
    struct Idle {};
    /// The message waits until the local model is set up.
    struct WaitingForLocalModel {
        enum class Setup { ofThisMessage, ofAnother };
        Setup setup; ///< What the message started itself ends with it.
    };
    /// The agent works, or waits for an approval or an answer.
    struct Running {};
    using Phase = std::variant<Idle, WaitingForLocalModel, Running>;

    /// All of them outlive the object; the scheduler is shut down before it goes.
    AgentRequest(Scheduler &scheduler, const SettingsStore &settings, NotificationPort &notifications,
                 Workspace &workspace, AgentLoop &loop, LocalModelFlow &localModel,
                 BrowserWindowPort &browserWindow, const RequestConfiguration &configuration);

    const Phase &phase() const { return m_phase; }
    bool isIdle() const { return std::holds_alternative<Idle>(m_phase); }
    bool isBusy() const { return std::holds_alternative<Running>(m_phase); }
    bool isInstallPending() const { return std::holds_alternative<WaitingForLocalModel>(m_phase); }

    /// Starts working on the message at the end of the transcript, or lets it wait for the local model. Only
    /// when idle.
    void begin();
    /// Ends the request at the user's wish. The interface is free at once, even if the work is slow to
    /// notice.
    void cancel();
    /// Ends the request without a word, since its conversation is left.
    void abandon();
    /// Ends the local model's setup, and with it a message that waits for it.
    void cancelLocalModelWork();

Q_SIGNALS:
    void isBusyChanged();
    /// A run has ended by itself, with an answer or an error.
    void finished();

private:
    void waitForLocalModel();
    void continueAfterInstallation();
    void beginAgentLoop();
    Task<void> run(int number, AIConfiguration config, QList<APIMessage> initialContext);
    void finalizeAssistant(const std::optional<QString> &error, bool cancelled);
    void tellCancelled();
    void stopWork();
    void save();
    void setPhase(Phase phase);
    std::optional<qsizetype> streamingRow() const;

    Scheduler &m_scheduler;
    const SettingsStore &m_settings;
    NotificationPort &m_notifications;
    Workspace &m_workspace;
    AgentLoop &m_loop;
    LocalModelFlow &m_localModel;
    BrowserWindowPort &m_browserWindow;
    const RequestConfiguration &m_configuration;
    Phase m_phase;
    /// Runs that have not ended yet: that of the phase, and cancelled ones on their way out.
    QList<TaskHandle<void>> m_runs;
    /// The run whose end is told. An older one finds another's message at the end of the transcript.
    int m_toldRun = 0;
};

} // namespace morvane
