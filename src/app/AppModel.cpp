#include "app/AppModel.h"

#include "app/AppServices.h"
#include "app/ContextTrimming.h"
#include "app/PendingAttachments.h"
#include "app/SelectedModel.h"
#include "base/ReferenceDate.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "store/SettingsStore.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qsizetype provisionalTitleLength = 40;
const QString onboardingKey = u"hasCompletedOnboarding"_s;

ChatMessage newMessage(Role role, const QString &text, const QList<ChatAttachment> &attachments)
{
    ChatMessage message;
    message.id = newUuid();
    message.role = role;
    message.text = text;
    message.isStreaming = role == Role::assistant;
    message.attachments = attachments;
    message.date = referenceDateNow();
    return message;
}

} // namespace

AppModel::AppModel(const AppServices &services, QObject *parent)
    : ConversationPort(parent), m_scheduler(services.scheduler), m_settings(services.settings),
      m_attachments(services.attachments),
      m_workspace(services.scheduler, services.conversations, services.settings, services.announcer),
      m_turns(services.service), m_tools(services.toolServers, services.executeTool, m_workspace),
      m_subagents(services.settings, services.toolServers, m_workspace, m_turns, m_tools),
      m_loop(services.settings, m_workspace, m_turns, m_tools, m_subagents),
      m_localModel(services.scheduler, services.settings, services.localModel, m_workspace, m_turns,
                   services.machineSummary),
      m_configuration(services.settings, services.toolServers, services.browserWindow,
                      services.machineSummary),
      m_titles(services.scheduler, m_turns, m_workspace, m_configuration),
      m_request(services.scheduler, services.settings, services.notifications, m_workspace, m_loop,
                m_localModel, services.browserWindow, m_configuration),
      m_updates(services.scheduler, services.settings, services.updates, services.urls, m_workspace,
                m_request)
{
    m_showOnboarding = !m_settings.value(onboardingKey).toBool();
    connect(&m_settings, &SettingsStore::providerIDChanged, this, [this](ProviderID provider) {
        if (provider != ProviderID::ollama)
            cancelLocalModelWork();
    });
    connect(&m_request, &AgentRequest::isBusyChanged, this, &AppModel::isBusyChanged);
    connect(&m_request, &AgentRequest::finished, this, [this] { m_titles.maybeGenerateConversationTitle(); });
    connect(&conversations(), &Conversations::arrived, this, &AppModel::showConversation);
    connect(&conversations(), &Conversations::opened, this, &AppModel::tellOpened);
    connect(&conversations(), &Conversations::settled, this, &AppModel::conversationReady);
    conversations().restore();
}

void AppModel::suggestPrompt(const QString &prompt)
{
    Q_EMIT suggestedPrompt(prompt);
}

PendingAttachments *AppModel::newAttachments(QObject *parent)
{
    return new PendingAttachments(m_scheduler, m_attachments, m_workspace.status, m_settings, parent);
}

bool AppModel::send(const QString &text, const QList<ChatAttachment> &attachments, const QString &note)
{
    if (refusesForUpdate())
        return false;
    const QString request = trimmed(text);
    if (request.isEmpty() && attachments.isEmpty())
        return false;
    if (!m_request.isIdle() || !isReady())
        return false;
    if (refusesImages(attachments))
        return false;
    appendRequest(request, attachments, note);
    m_request.begin();
    return true;
}

bool AppModel::refusesForUpdate()
{
    const auto &update = m_updates.availableUpdate();
    if (!m_updates.isUpdateRequired() || !update)
        return false;
    const QString version = u"%1 build %2"_s.arg(update->version, QString::number(update->build));
    status().setStatusText(u"Update required: "_s + version);
    status().announce(u"This update is required to continue. Please update Morvane to "_s + version +
                      u" now."_s);
    return true;
}

bool AppModel::refusesImages(const QList<ChatAttachment> &attachments)
{
    const bool hasImage =
        std::any_of(attachments.begin(), attachments.end(), [](const ChatAttachment &attachment) {
            return attachment.kind == AttachmentKind::image;
        });
    if (!hasImage || modelSeesImages(m_settings))
        return false;
    status().setStatusText(u"Current model can't see images"_s);
    status().announce(u"The current model can't see images. Switch to a vision model, like Gemini or G P T "
                      "five mini, to send this attachment, or remove the image."_s);
    return true;
}

void AppModel::appendRequest(const QString &text, const QList<ChatAttachment> &attachments,
                             const QString &note)
{
    if (messages().isEmpty())
        conversations().setProvisionalTitle(text.isEmpty() ? attachments.constFirst().filename
                                                           : firstCharacters(text, provisionalTitleLength));
    transcript().append(newMessage(Role::user, text, attachments));
    m_workspace.context.append({APIMessage::User{text + note, attachments}});
    // What the user wrote survives a crash; without its answer, which would come back as one that is still
    // being written.
    saveCurrentConversation();
    transcript().append(newMessage(Role::assistant, {}, {}));
}

void AppModel::cancel()
{
    m_request.cancel();
}

void AppModel::cancelLocalModelWork()
{
    m_request.cancelLocalModelWork();
}

void AppModel::saveCurrentConversation()
{
    conversations().save(messages());
}

void AppModel::newConversation()
{
    m_request.abandon();
    m_localModel.cancelTasks();
    saveCurrentConversation();
    clearConversation();
    conversations().begin();
    m_titles.forget();
    conversations().reload();
    status().announceProgress(u"New conversation started."_s);
}

void AppModel::openConversation(QUuid id)
{
    if (conversations().isCurrent(id) || !m_request.isIdle())
        return;
    m_request.abandon();
    saveCurrentConversation();
    // The transcript shows the conversation before it until the file is read.
    conversations().open(id);
    activity().clear();
    status().setStatusText(u"Ready"_s);
    Q_EMIT conversationLeft();
}

void AppModel::showConversation(const QList<ChatMessage> &messages)
{
    m_workspace.context = apiContext(messages);
    transcript().reset(messages);
}

void AppModel::tellOpened()
{
    const QString title = currentTitle();
    status().announceProgress(u"Opened %1."_s.arg(title.isEmpty() ? u"the conversation"_s : title));
}

void AppModel::deleteConversation(QUuid id)
{
    if (conversations().isCurrent(id)) {
        m_request.abandon();
        clearConversation();
    }
    conversations().remove(id);
    status().announceProgress(u"Conversation deleted."_s);
}

void AppModel::clearConversation()
{
    transcript().reset({});
    m_workspace.context.clear();
    activity().clear();
    status().setStatusText(u"Ready"_s);
    Q_EMIT conversationLeft();
}

void AppModel::completeOnboarding()
{
    endOnboarding();
    status().setStatusText(u"Ready"_s);
    status().announceProgress(u"Let's get started. Ask me anything."_s);
}

void AppModel::skipOnboarding()
{
    endOnboarding();
    status().announceProgress(u"Skipped local model setup. Open Settings to choose a provider."_s);
}

void AppModel::prepareToQuit()
{
    gate().leaveUnanswered();
    questions().leaveUnanswered();
}

void AppModel::endOnboarding()
{
    m_settings.setValue(onboardingKey, true);
    m_showOnboarding = false;
    Q_EMIT showOnboardingChanged();
}

} // namespace morvane
