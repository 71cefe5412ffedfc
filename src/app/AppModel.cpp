#include "app/AppModel.h"

#include "app/BrowserWindowPort.h"
#include "app/ContextTrimming.h"
#include "app/FriendlyError.h"
#include "app/NotificationPort.h"
#include "app/UpdatePort.h"
#include "async/Cancelled.h"
#include "async/Scheduler.h"
#include "base/ReferenceDate.h"
#include "base/Text.h"
#include "base/Uuid.h"
#include "providers/AIService.h"
#include "store/SettingsStore.h"
#include "tools/BuiltinTools.h"
#include "tools/ToolServerPort.h"

#include <utility>

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

QString firstTextOf(Role role, const QList<ChatMessage> &messages)
{
    for (const ChatMessage &message : messages)
        if (message.role == role)
            return message.text;
    return {};
}

} // namespace

AppModel::AppModel(const AppServices &services, QObject *parent)
    : QObject(parent), m_services(services), m_workspace(services), m_turns(services.service),
      m_tools(services, m_workspace), m_subagents(services, m_workspace, m_turns, m_tools),
      m_loop(services, m_workspace, m_turns, m_tools, m_subagents), m_titles(m_turns),
      m_localModel(services, m_workspace, m_turns)
{
    m_showOnboarding = !services.settings.value(onboardingKey).toBool();
    connect(&services.settings, &SettingsStore::providerIDChanged, this, [this](ProviderID provider) {
        if (provider != ProviderID::ollama)
            cancelLocalModelWork();
    });
    connect(&m_localModel, &LocalModelFlow::installationEnded, this, &AppModel::continueAfterInstallation);
    services.scheduler.spawn(restore());
}

bool AppModel::hasAPIKey() const
{
    const ProviderID provider = settings().providerID();
    return provider == ProviderID::ollama || provider == ProviderID::custom ||
           !trimmed(settings().apiKey()).isEmpty();
}

bool AppModel::isUpdateRequired() const
{
    return m_services.updates.isUpdateRequired();
}

bool AppModel::modelSeesImages() const
{
    const ProviderID provider = settings().providerID();
    return provider == ProviderID::gemini || provider == ProviderID::openai ||
           AIService::visionModelHeuristic(trimmed(settings().model()));
}

void AppModel::suggestPrompt(const QString &prompt)
{
    Q_EMIT suggestedPrompt(prompt);
}

bool AppModel::send(const QString &text, const QList<ChatAttachment> &attachments)
{
    if (refusesForUpdate())
        return false;
    const QString request = trimmed(text);
    if (request.isEmpty() && attachments.isEmpty())
        return false;
    if (m_isBusy || m_installPending)
        return false;
    if (refusesImages(attachments))
        return false;
    appendRequest(request, attachments);
    if (settings().providerID() == ProviderID::ollama && !m_localModel.info().running)
        waitForLocalModel();
    else
        beginAgentLoop();
    return true;
}

bool AppModel::refusesForUpdate()
{
    const auto update = m_services.updates.availableUpdate();
    if (!isUpdateRequired() || !update)
        return false;
    const QString version = u"%1 build %2"_s.arg(update->version).arg(update->build);
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
    if (!hasImage || modelSeesImages())
        return false;
    status().setStatusText(u"Current model can't see images"_s);
    status().announce(u"The current model can't see images. Switch to a vision model, like Gemini or G P T "
                      "five mini, to send this attachment, or remove the image."_s);
    return true;
}

void AppModel::appendRequest(const QString &text, const QList<ChatAttachment> &attachments)
{
    ++m_navigation;
    if (messages().isEmpty()) {
        m_currentTitle = text.isEmpty() ? attachments.constFirst().filename
                                        : firstCharacters(text, provisionalTitleLength);
    }
    transcript().append(newMessage(Role::user, text, attachments));
    m_context.append({APIMessage::User{text, attachments}});
    transcript().append(newMessage(Role::assistant, {}, {}));
}

void AppModel::waitForLocalModel()
{
    m_installPending = true;
    if (!m_localModel.info().installing && m_localModel.pullingModel().isEmpty()) {
        m_currentTask = m_localModel.startInstallThenRespond();
        return;
    }
    status().setStatusText(u"Waiting for the local model setup to finish…"_s);
    status().announceProgress(u"Waiting for the local model setup before sending."_s);
}

void AppModel::continueAfterInstallation()
{
    if (!std::exchange(m_installPending, false))
        return;
    if (m_localModel.info().running) {
        beginAgentLoop();
        return;
    }
    const QString error = m_localModel.info().error;
    finalizeAssistant(error.isEmpty() ? u"The local model could not be set up. Open Settings to "
                                        "see the details, then try again."_s
                                      : error,
                      false);
}

void AppModel::cancelLocalModelWork()
{
    m_localModel.cancelTasks();
    if (!std::exchange(m_installPending, false))
        return;
    const auto row = transcript().newestAssistant();
    if (row && messages().at(*row).isStreaming) {
        transcript().setStreaming(*row, false);
        transcript().setErrorMessage(
            *row, u"Switched to another provider before the local model finished downloading."_s);
    }
    status().setStatusText(u"Ready"_s);
    setBusy(false);
    saveCurrentConversation();
}

void AppModel::beginAgentLoop()
{
    if (!hasAPIKey()) {
        const auto row = transcript().newestAssistant();
        if (!row)
            return;
        transcript().setStreaming(*row, false);
        transcript().setErrorMessage(*row, u"No API key is set. Open Settings to add your free API key."_s);
        status().setStatusText(u"Waiting for API key"_s);
        status().announce(u"Morvane needs an API key. Open Settings and choose a provider to get started."_s);
        return;
    }
    setBusy(true);
    const ProviderID provider = settings().providerID();
    status().setStatusText(provider == ProviderID::ollama
                               ? u"Local model is working…"_s
                               : u"Connecting to "_s + displayName(provider) + u"…"_s);
    status().announceProgress(u"Morvane is responding."_s);
    m_currentTask = m_services.scheduler.spawn(run(configuration(), trimmedAPIContext(m_context, provider)));
}

AIConfiguration AppModel::configuration() const
{
    AIConfiguration config;
    config.provider = settings().providerID();
    config.apiKey = settings().apiKey();
    config.model = trimmed(settings().model());
    config.systemPrompt = fullSystemPrompt();
    config.temperature = settings().temperature();
    config.tools = BuiltinTools::all(settings().useTools() ? UseTools::yes : UseTools::no) +
                   m_services.toolServers.exposedAITools();
    config.baseURL = settings().customBaseURL();
    return config;
}

QString AppModel::fullSystemPrompt() const
{
    QString prompt = settings().systemPrompt() + u"\n\nYou are running on: "_s + m_services.machineSummary();
    if (m_services.browserWindow.isVisible()) {
        prompt +=
            u"\n\n[Browser window is open — the user watches live. For web tasks use "
            "browser_open/browser_read/browser_click/browser_type/browser_scroll/browser_back. You can do "
            "anything in the browser: click links, fill forms, type and submit. Use browser_* tools, then "
            "browser_read to verify.]"_s;
    }
    return prompt;
}

Task<void> AppModel::run(AIConfiguration config, QList<APIMessage> initialContext)
{
    std::exception_ptr failure;
    try {
        m_context = co_await m_loop.runAgentLoop(std::move(config), std::move(initialContext));
    } catch (...) {
        failure = std::current_exception();
    }
    if (!failure) {
        finalizeAssistant(std::nullopt, false);
        co_return;
    }
    try {
        std::rethrow_exception(failure);
    } catch (const Cancelled &) {
        finalizeAssistant(std::nullopt, true);
    } catch (...) {
        finalizeAssistant(friendlyError(failure), false);
    }
}

void AppModel::finalizeAssistant(const std::optional<QString> &error, bool cancelled)
{
    m_currentTask.reset();
    const auto row = transcript().newestAssistant();
    if (!row) {
        setBusy(false);
        return;
    }
    transcript().setStreaming(*row, false);
    if (error) {
        transcript().setErrorMessage(*row, *error);
        status().setStatusText(u"Error"_s);
        m_services.notifications.notify(*error, NotificationPort::Outcome::error);
        status().announce(u"There was an error. "_s + *error);
    } else if (cancelled) {
        tellCancelled();
    } else {
        const QString text = messages().at(*row).text;
        status().setStatusText(u"Ready"_s);
        m_services.notifications.notify(text, NotificationPort::Outcome::answer);
        status().announceProgress(text.isEmpty() ? u"Morvane did not return any text."_s : text);
    }
    saveCurrentConversation();
    setBusy(false);
    if (!cancelled)
        maybeGenerateConversationTitle();
}

void AppModel::tellCancelled()
{
    status().setStatusText(u"Cancelled"_s);
    m_services.notifications.playSound(u"MorvaneCancelled"_s);
    status().announce(u"Generation cancelled."_s);
}

void AppModel::cancel()
{
    cancelCurrentTask();
    m_installPending = false;
    gate().resolvePermission(false, false);
    const QList<ChatMessage> &rows = messages();
    for (qsizetype row = rows.size() - 1; row >= 0; --row) {
        if (rows.at(row).role != Role::assistant || !rows.at(row).isStreaming)
            continue;
        // The interface is free at once, even if the task is slow to notice; its own end tells all this
        // again.
        transcript().setStreaming(row, false);
        setBusy(false);
        tellCancelled();
        saveCurrentConversation();
        return;
    }
    setBusy(false);
    saveCurrentConversation();
}

void AppModel::maybeGenerateConversationTitle()
{
    if (!m_currentConversationID || m_titleGeneratedFor == m_currentConversationID || m_isBusy)
        return;
    m_titleGeneratedFor = m_currentConversationID;
    const QString firstMessage = firstTextOf(Role::user, messages());
    if (firstMessage.isEmpty())
        return;
    m_services.scheduler.spawn(
        generateTitle(*m_currentConversationID, firstMessage, firstTextOf(Role::assistant, messages())));
}

Task<void> AppModel::generateTitle(QUuid id, QString firstMessage, QString reply)
{
    const QString title = co_await m_titles.generate(firstMessage, reply, configuration());
    if (title.isEmpty() || m_currentConversationID != id)
        co_return;
    m_currentTitle = title;
    saveCurrentConversation();
    status().announceProgress(u"Conversation summarized as: "_s + title + u'.');
}

void AppModel::cancelCurrentTask()
{
    if (m_currentTask)
        m_currentTask->cancel();
    m_currentTask.reset();
}

void AppModel::setBusy(bool busy)
{
    if (std::exchange(m_isBusy, busy) != busy)
        Q_EMIT isBusyChanged();
}

void AppModel::completeOnboarding()
{
    settings().setValue(onboardingKey, true);
    m_showOnboarding = false;
    Q_EMIT showOnboardingChanged();
    status().setStatusText(u"Ready"_s);
    status().announceProgress(u"Let's get started. Ask me anything."_s);
}

void AppModel::skipOnboarding()
{
    settings().setValue(onboardingKey, true);
    m_showOnboarding = false;
    Q_EMIT showOnboardingChanged();
    status().announceProgress(u"Skipped local model setup. Open Settings to choose a provider."_s);
}

} // namespace morvane
