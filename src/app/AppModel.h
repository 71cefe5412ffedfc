#pragma once

#include "app/ActivityLog.h"
#include "app/ApprovalGate.h"
#include "app/LocalModelFlow.h"
#include "app/Questions.h"
#include "app/Status.h"
#include "app/Transcript.h"
#include "async/Scheduler.h"
#include "model/ChatAttachment.h"
#include "model/ConversationMeta.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"

#include <QObject>
#include <memory>
#include <optional>

namespace morvane {

struct AppServices;
class AgentLoop;
class SubagentRunner;
class TitleGenerator;

/// The centre of the program: every user action passes through it, every view observes it. It owns the
/// conversation, the working context of the model and the running request. Main thread.
class AppModel : public QObject {
    Q_OBJECT
public:
    /// Everything in `services` must outlive the model. The list of conversations is read and the last
    /// conversation restored in the background; `restored` tells when that is done.
    explicit AppModel(const AppServices &services, QObject *parent = nullptr);
    ~AppModel() override;

    SettingsStore &settings() const { return m_settings; }
    Transcript &transcript() { return m_transcript; }
    ActivityLog &activity() { return m_activity; }
    Status &status() { return m_status; }
    ApprovalGate &gate() { return m_gate; }
    Questions &questions() { return m_questions; }
    LocalModelFlow &localModel() { return *m_localModel; }

    const QList<ChatMessage> &messages() const { return m_transcript.messages(); }
    const QList<APIMessage> &context() const { return m_context; }
    const QList<ConversationMeta> &conversations() const { return m_conversations; }
    std::optional<QUuid> currentConversationID() const { return m_currentConversationID; }
    QString currentTitle() const { return m_currentTitle; }
    bool isBusy() const { return m_isBusy; }
    bool showOnboarding() const { return m_showOnboarding; }
    QString subagentLabel() const { return m_subagentLabel; } ///< Empty while no subagent works.

    /// Whether the selected provider can be asked: it needs no key, or has one.
    bool hasAPIKey() const;
    /// Whether an update is known without which this build must not go on working.
    bool isUpdateRequired() const;
    /// Whether the selected model accepts images.
    bool modelSeesImages() const;

    /// A prompt chosen on the welcome screen on its way to the composer.
    void suggestPrompt(const QString &prompt);

    /// Takes a message and starts working on it. False if it was refused; the composer then keeps its draft.
    bool send(const QString &text, const QList<ChatAttachment> &attachments);
    void cancel();

    void newConversation();
    void openConversation(QUuid id);
    void deleteConversation(QUuid id);
    void saveCurrentConversation();

    void completeOnboarding();
    void skipOnboarding();

Q_SIGNALS:
    void isBusyChanged();
    void conversationsChanged();
    void currentConversationChanged();
    void subagentLabelChanged();
    void showOnboardingChanged();
    void updateStateChanged();
    void suggestedPrompt(const QString &prompt);
    /// The conversations are listed and the last one is open again.
    void restored();

private:
    friend class LocalModelFlow;

    Task<void> restore();
    Task<void> reloadConversations();
    Task<void> open(QUuid id);
    Task<void> run();
    void beginAgentLoop();
    void finalizeAssistant(std::optional<QString> error, bool cancelled);
    void endRequest();
    void clearConversation();
    void setBusy(bool busy);
    void setCurrentConversation(std::optional<QUuid> id);

    const AppServices &m_services;
    SettingsStore &m_settings;
    Transcript m_transcript;
    ActivityLog m_activity;
    Status m_status;
    ApprovalGate m_gate;
    Questions m_questions;
    std::unique_ptr<LocalModelFlow> m_localModel;
    std::unique_ptr<SubagentRunner> m_subagents;
    std::unique_ptr<AgentLoop> m_loop;
    std::unique_ptr<TitleGenerator> m_titles;

    QList<APIMessage> m_context;
    QList<ConversationMeta> m_conversations;
    std::optional<QUuid> m_currentConversationID;
    QString m_currentTitle;
    QString m_subagentLabel;
    bool m_isBusy = false;
    bool m_installPending = false;
    bool m_showOnboarding = false;
    std::optional<TaskHandle<void>> m_currentTask;
};

} // namespace morvane
