#include "app/AgentRequest.h"

#include "app/AgentLoop.h"
#include "app/BrowserWindowPort.h"
#include "app/ContextTrimming.h"
#include "app/FriendlyError.h"
#include "app/LocalModelFlow.h"
#include "app/NotificationPort.h"
#include "app/RequestConfiguration.h"
#include "app/SelectedModel.h"
#include "app/Workspace.h"
#include "async/Cancelled.h"
#include "async/Scheduler.h"
#include "base/Overloaded.h"
#include "net/TransportError.h"
#include "store/SettingsStore.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

AgentRequest::AgentRequest(Scheduler &scheduler, const SettingsStore &settings,
                           NotificationPort &notifications, Workspace &workspace, AgentLoop &loop,
                           LocalModelFlow &localModel, BrowserWindowPort &browserWindow,
                           const RequestConfiguration &configuration)
    : m_scheduler(scheduler), m_settings(settings), m_notifications(notifications), m_workspace(workspace),
      m_loop(loop), m_localModel(localModel), m_browserWindow(browserWindow), m_configuration(configuration)
{
    connect(&localModel, &LocalModelFlow::installationEnded, this, &AgentRequest::continueAfterInstallation);
}

void AgentRequest::setPhase(Phase phase)
{
    const std::size_t before = m_phase.index();
    m_phase = phase;
    if (m_phase.index() != before)
        Q_EMIT isBusyChanged();
}

void AgentRequest::begin()
{
    if (m_settings.providerID() == ProviderID::ollama && !m_localModel.info().running)
        waitForLocalModel();
    else
        beginAgentLoop();
}

void AgentRequest::waitForLocalModel()
{
    if (!m_localModel.isWorking()) {
        setPhase(WaitingForLocalModel{WaitingForLocalModel::Setup::ofThisMessage});
        m_localModel.startInstallThenRespond();
        return;
    }
    setPhase(WaitingForLocalModel{WaitingForLocalModel::Setup::ofAnother});
    m_workspace.status.setStatusText(u"Waiting for the local model setup to finish…"_s);
    m_workspace.status.announceProgress(u"Waiting for the local model setup before sending."_s);
}

void AgentRequest::continueAfterInstallation()
{
    if (!isInstallPending())
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

void AgentRequest::beginAgentLoop()
{
    Transcript &transcript = m_workspace.transcript;
    Status &status = m_workspace.status;
    if (!hasAPIKey(m_settings)) {
        setPhase(Idle{});
        const auto row = transcript.newestAssistant();
        if (!row)
            return;
        transcript.setStreaming(*row, false);
        transcript.setErrorMessage(*row, u"No API key is set. Open Settings to add your free API key."_s);
        status.setStatusText(u"Waiting for API key"_s);
        status.announce(u"Morvane needs an API key. Open Settings and choose a provider to get started."_s);
        return;
    }
    const ProviderID provider = m_settings.providerID();
    setPhase(Running{});
    status.setStatusText(provider == ProviderID::ollama
                             ? u"Local model is working…"_s
                             : u"Connecting to "_s + displayName(provider) + u"…"_s);
    status.announceProgress(u"Morvane is responding."_s);
    m_runs.removeIf([](const TaskHandle<void> &run) { return run.done(); });
    m_runs.append(m_scheduler.spawn(
        run(++m_toldRun, m_configuration.build(), trimmedAPIContext(m_workspace.context, provider))));
}

Task<void> AgentRequest::run(int number, AIConfiguration config, QList<APIMessage> initialContext)
{
    std::exception_ptr failure;
    QList<APIMessage> context;
    try {
        context = co_await m_loop.runAgentLoop(std::move(config), std::move(initialContext));
    } catch (...) {
        failure = std::current_exception();
    }
    if (number != m_toldRun)
        co_return;
    if (!failure) {
        m_workspace.context = std::move(context);
        finalizeAssistant(std::nullopt, false);
        co_return;
    }
    try {
        std::rethrow_exception(failure);
    } catch (const Cancelled &) {
        finalizeAssistant(std::nullopt, true);
    } catch (const TransportError &) {
        finalizeAssistant(friendlyError(failure), false);
        // The local server may have ended. Once that is known, the next message starts it again.
        if (m_settings.providerID() == ProviderID::ollama)
            m_localModel.refreshLocalModel();
    } catch (...) {
        finalizeAssistant(friendlyError(failure), false);
    }
}

void AgentRequest::finalizeAssistant(const std::optional<QString> &error, bool cancelled)
{
    Transcript &transcript = m_workspace.transcript;
    Status &status = m_workspace.status;
    const auto row = transcript.newestAssistant();
    if (!row) {
        setPhase(Idle{});
        return;
    }
    transcript.setStreaming(*row, false);
    if (error) {
        transcript.setErrorMessage(*row, *error);
        status.setStatusText(u"Error"_s);
        m_notifications.notify(*error, NotificationPort::Outcome::error);
        status.announce(u"There was an error. "_s + *error);
    } else if (cancelled) {
        tellCancelled();
    } else {
        const QString text = transcript.messages().at(*row).text;
        status.setStatusText(u"Ready"_s);
        m_notifications.notify(text, NotificationPort::Outcome::answer);
        status.announceProgress(text.isEmpty() ? u"Morvane did not return any text."_s : text);
    }
    save();
    setPhase(Idle{});
    if (!cancelled)
        Q_EMIT finished();
}

void AgentRequest::tellCancelled()
{
    m_workspace.status.setStatusText(u"Cancelled"_s);
    m_notifications.playSound(u"MorvaneCancelled"_s);
    m_workspace.status.announce(u"Generation cancelled."_s);
}

void AgentRequest::stopWork()
{
    std::visit(Overloaded{[](Idle &) {},
                          [this](WaitingForLocalModel &waiting) {
                              if (waiting.setup == WaitingForLocalModel::Setup::ofThisMessage)
                                  m_localModel.cancelTasks();
                          },
                          [this](Running &) { m_browserWindow.stop(); }},
               m_phase);
    for (TaskHandle<void> &run : m_runs)
        run.cancel();
    m_workspace.gate.resolvePermission(false, false);
}

void AgentRequest::cancel()
{
    stopWork();
    const auto row = streamingRow();
    if (row)
        m_workspace.transcript.setStreaming(*row, false);
    setPhase(Idle{});
    // The end of the work tells this again.
    if (row)
        tellCancelled();
    save();
}

void AgentRequest::abandon()
{
    stopWork();
    ++m_toldRun;
    setPhase(Idle{});
}

void AgentRequest::cancelLocalModelWork()
{
    m_localModel.cancelTasks();
    if (!isInstallPending())
        return;
    if (const auto row = streamingRow()) {
        m_workspace.transcript.setStreaming(*row, false);
        m_workspace.transcript.setErrorMessage(
            *row, u"Switched to another provider before the local model finished downloading."_s);
    }
    m_workspace.status.setStatusText(u"Ready"_s);
    setPhase(Idle{});
    save();
}

void AgentRequest::save()
{
    m_workspace.conversations.save(m_workspace.transcript.messages());
}

std::optional<qsizetype> AgentRequest::streamingRow() const
{
    // While a conversation is being opened, the transcript still shows the one before it.
    if (!m_workspace.conversations.isReady())
        return std::nullopt;
    const QList<ChatMessage> &rows = m_workspace.transcript.messages();
    for (qsizetype row = rows.size() - 1; row >= 0; --row)
        if (rows.at(row).role == Role::assistant && rows.at(row).isStreaming)
            return row;
    return std::nullopt;
}

} // namespace morvane
