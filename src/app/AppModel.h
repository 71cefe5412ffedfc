#pragma once

#include "app/AgentLoop.h"
#include "app/AgentRequest.h"
#include "app/ConversationPort.h"
#include "app/LocalModelFlow.h"
#include "app/RequestConfiguration.h"
#include "app/SubagentRunner.h"
#include "app/TitleGenerator.h"
#include "app/ToolCallRunner.h"
#include "app/TurnRunner.h"
#include "app/UpdateModel.h"
#include "app/Workspace.h"

namespace morvane {

class AttachmentService;
class Scheduler;
class SettingsStore;
struct AppServices;

/// The centre of the program: every user action passes through it, and the views observe its parts. Main
/// thread.
class AppModel : public ConversationPort {
    Q_OBJECT
public:
    /// Everything in `services` must outlive the model, and the scheduler must be shut down before the model
    /// goes. The list of conversations is read and the last conversation restored in the background.
    explicit AppModel(const AppServices &services, QObject *parent = nullptr);

    SettingsStore &settings() const { return m_settings; }
    Conversations &conversations() { return m_workspace.conversations; }
    const Conversations &conversations() const { return m_workspace.conversations; }
    Transcript &transcript() { return m_workspace.transcript; }
    const Transcript &transcript() const override { return m_workspace.transcript; }
    ActivityLog &activity() { return m_workspace.activity; }
    const ActivityLog &activity() const override { return m_workspace.activity; }
    Status &status() { return m_workspace.status; }
    const Status &status() const override { return m_workspace.status; }
    ApprovalGate &gate() { return m_workspace.gate; }
    Questions &questions() { return m_workspace.questions; }
    LocalModelFlow &localModel() { return m_localModel; }
    SubagentRunner &subagents() { return m_subagents; }
    UpdateModel &updates() { return m_updates; }

    const QList<ChatMessage> &messages() const { return m_workspace.transcript.messages(); }
    const QList<APIMessage> &context() const { return m_workspace.context; }
    std::optional<QUuid> currentConversationID() const { return conversations().currentID(); }
    QString currentTitle() const { return conversations().currentTitle(); }
    bool isBusy() const override { return m_request.isBusy(); }
    bool canCancel() const override { return !m_request.isIdle(); }
    bool isReady() const override { return conversations().isReady(); }
    /// Whether a message waits for the local model's setup.
    bool isInstallPending() const { return m_request.isInstallPending(); }
    bool showOnboarding() const { return m_showOnboarding; }

    /// A prompt chosen on the welcome screen, on its way to the composer.
    void suggestPrompt(const QString &prompt);

    bool send(const QString &text, const QList<ChatAttachment> &attachments,
              const QString &note = {}) override;
    void cancel() override;
    PendingAttachments *newAttachments(QObject *parent) override;

    /// Saves the conversation and begins a new one.
    void newConversation();
    /// Saves the conversation and opens another. Nothing happens while a request runs or waits.
    void openConversation(QUuid id);
    /// Deletes any conversation, also one that is being opened; the current one is left without a save.
    void deleteConversation(QUuid id);
    void saveCurrentConversation();

    /// Ends the local model's setup, and with it a message that waits for it.
    void cancelLocalModelWork();

    void completeOnboarding();
    void skipOnboarding();

    /// Ends the waits for an approval or an answer, so that the scheduler's shutdown, which comes next, has
    /// nothing to wait for that nobody will bring.
    void prepareToQuit();

Q_SIGNALS:
    void showOnboardingChanged();
    void suggestedPrompt(const QString &prompt);

private:
    bool refusesForUpdate();
    bool refusesImages(const QList<ChatAttachment> &attachments);
    void appendRequest(const QString &text, const QList<ChatAttachment> &attachments, const QString &note);
    void showConversation(const QList<ChatMessage> &messages);
    void tellOpened();
    void clearConversation();
    void endOnboarding();

    Scheduler &m_scheduler;
    SettingsStore &m_settings;
    AttachmentService &m_attachments;
    Workspace m_workspace;
    TurnRunner m_turns;
    ToolCallRunner m_tools;
    SubagentRunner m_subagents;
    AgentLoop m_loop;
    LocalModelFlow m_localModel;
    RequestConfiguration m_configuration;
    TitleGenerator m_titles;
    AgentRequest m_request;
    UpdateModel m_updates;
    bool m_showOnboarding = false;
};

} // namespace morvane
