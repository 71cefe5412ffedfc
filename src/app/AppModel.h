#pragma once

#include "app/AgentLoop.h"
#include "app/LocalModelFlow.h"
#include "app/SubagentRunner.h"
#include "app/TitleGenerator.h"
#include "app/ToolCallRunner.h"
#include "app/TurnRunner.h"
#include "app/Workspace.h"
#include "model/ChatAttachment.h"
#include "model/ConversationMeta.h"

#include <QObject>
#include <optional>

namespace morvane {

/// The centre of the program: every user action passes through it, every view observes it. It owns the
/// conversation, the working context of the model and the running request. Main thread.
class AppModel : public QObject {
    Q_OBJECT
public:
    /// Everything in `services` must outlive the model, and the scheduler must be shut down before the model
    /// goes. The list of conversations is read and the last conversation restored in the background;
    /// `restored` tells when that is done.
    explicit AppModel(const AppServices &services, QObject *parent = nullptr);

    SettingsStore &settings() const { return m_services.settings; }
    Transcript &transcript() { return m_workspace.transcript; }
    ActivityLog &activity() { return m_workspace.activity; }
    Status &status() { return m_workspace.status; }
    ApprovalGate &gate() { return m_workspace.gate; }
    Questions &questions() { return m_workspace.questions; }
    LocalModelFlow &localModel() { return m_localModel; }
    SubagentRunner &subagents() { return m_subagents; }
    BrowserWindowPort &browserWindow() const { return m_services.browserWindow; }
    UpdatePort &updates() const { return m_services.updates; }
    Announcer &announcer() const { return m_services.announcer; }
    AttachmentService &attachmentService() const { return m_services.attachments; }
    Scheduler &scheduler() const { return m_services.scheduler; }
    /// What the model works with, for objects that a window makes for as long as it lasts.
    const AppServices &services() const { return m_services; }

    const QList<ChatMessage> &messages() const { return m_workspace.transcript.messages(); }
    const QList<APIMessage> &context() const { return m_context; }
    const QList<ConversationMeta> &conversations() const { return m_conversations; }
    std::optional<QUuid> currentConversationID() const { return m_currentConversationID; }
    const QString &currentTitle() const { return m_currentTitle; }
    bool isBusy() const { return m_isBusy; }
    /// Whether a message waits for the local model's setup.
    bool isInstallPending() const { return m_installPending; }
    bool showOnboarding() const { return m_showOnboarding; }

    /// Whether the selected provider can be asked: it needs no key, or has one.
    bool hasAPIKey() const;
    /// Whether an update is known without which this build must not go on working.
    bool isUpdateRequired() const;
    /// Whether the selected model accepts images.
    bool modelSeesImages() const;

    /// A prompt chosen on the welcome screen, on its way to the composer.
    void suggestPrompt(const QString &prompt);

    /// Takes a message and starts working on it. False if it was refused; the composer then keeps its draft.
    bool send(const QString &text, const QList<ChatAttachment> &attachments);
    void cancel();

    void newConversation();
    void openConversation(QUuid id);
    void deleteConversation(QUuid id);
    void saveCurrentConversation();

    /// Ends the local model's setup, and with it a message that waits for it.
    void cancelLocalModelWork();

    void completeOnboarding();
    void skipOnboarding();

Q_SIGNALS:
    void isBusyChanged();
    void conversationsChanged();
    void currentConversationChanged();
    void showOnboardingChanged();
    void updateStateChanged();
    void suggestedPrompt(const QString &prompt);
    /// The conversations are listed and the last one is open again.
    void restored();

private:
    Task<void> restore();
    Task<void> reloadConversations();
    Task<void> open(QUuid id);
    Task<void> run(AIConfiguration config, QList<APIMessage> initialContext);
    Task<void> generateTitle(QUuid id, QString firstMessage, QString reply);

    bool refusesForUpdate();
    bool refusesImages(const QList<ChatAttachment> &attachments);
    void appendRequest(const QString &text, const QList<ChatAttachment> &attachments);
    void waitForLocalModel();
    void continueAfterInstallation();
    void beginAgentLoop();
    AIConfiguration configuration() const;
    QString fullSystemPrompt() const;
    void finalizeAssistant(const std::optional<QString> &error, bool cancelled);
    void tellCancelled();
    void maybeGenerateConversationTitle();
    void cancelCurrentTask();
    void clearConversation();
    void setConversations(QList<ConversationMeta> conversations);
    void setBusy(bool busy);
    QString titleOf(QUuid id) const;

    const AppServices &m_services;
    Workspace m_workspace;
    TurnRunner m_turns;
    ToolCallRunner m_tools;
    SubagentRunner m_subagents;
    AgentLoop m_loop;
    TitleGenerator m_titles;
    LocalModelFlow m_localModel;

    QList<APIMessage> m_context;
    QList<ConversationMeta> m_conversations;
    std::optional<QUuid> m_currentConversationID;
    QString m_currentTitle;
    std::optional<QUuid> m_titleGeneratedFor;
    bool m_isBusy = false;
    bool m_installPending = false;
    bool m_showOnboarding = false;
    int m_navigation = 0;   ///< Grows with every change of conversation, so that a late read is dropped.
    int m_storeChanges = 0; ///< Grows with every save and removal, so that an outdated list is read again.
    std::optional<TaskHandle<void>> m_currentTask;
};

} // namespace morvane
