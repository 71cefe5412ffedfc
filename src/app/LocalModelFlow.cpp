#include "app/LocalModelFlow.h"

#include "app/FriendlyError.h"
#include "app/Log.h"
#include "app/TurnRunner.h"
#include "async/Cancelled.h"
#include "async/Scheduler.h"
#include "base/Text.h"
#include "localmodel/LocalModelRuntime.h"
#include "store/SettingsStore.h"
#include "tools/BuiltinTools.h"

using namespace Qt::StringLiterals;

namespace morvane {

LocalModelFlow::LocalModelFlow(Scheduler &scheduler, SettingsStore &settings, LocalModelRuntime &runtime,
                               Workspace &workspace, TurnRunner &turns,
                               std::function<QString()> machineSummary)
    : m_scheduler(scheduler), m_settings(settings), m_runtime(runtime), m_workspace(workspace),
      m_turns(turns), m_machineSummary(std::move(machineSummary))
{
}

void LocalModelFlow::setProgress(const QString &label, std::optional<double> fraction)
{
    m_info.progress = label;
    m_info.progressFraction = fraction;
    Q_EMIT changed();
}

void LocalModelFlow::refreshLocalModel()
{
    m_scheduler.spawn(refresh());
}

void LocalModelFlow::refreshThenInstall()
{
    m_scheduler.spawn(refreshAndInstall());
}

Task<void> LocalModelFlow::refreshAndInstall()
{
    // What is there already must be known first, or its installation would be announced.
    co_await refresh();
    if (m_settings.providerID() == ProviderID::ollama)
        installLocalModelIfNeeded();
}

Task<void> LocalModelFlow::refresh()
{
    const QString model = trimmed(m_settings.model());
    const bool serverRunning = co_await m_runtime.isServerRunning();
    if (!serverRunning) {
        m_info.running = false;
        setProgress(m_runtime.isBinaryInstalled() ? u"Ollama is not running."_s
                                                  : u"Ollama is not installed yet."_s,
                    m_info.progressFraction);
        co_return;
    }
    m_installedModels = co_await m_runtime.installedModels();
    const QString name = model.isEmpty() ? QString::fromLatin1(standardModel) : model;
    m_info.running = m_installedModels.contains(name) || m_installedModels.contains(name + u":latest"_s);
    if (m_info.running) {
        m_info.error.clear();
        setProgress(u"The %1 model is ready."_s.arg(name), m_info.progressFraction);
        m_scheduler.spawn(warmUpLocalModel());
    } else {
        setProgress(u"Ollama is running, but the %1 model is not downloaded yet."_s.arg(name),
                    m_info.progressFraction);
    }
}

void LocalModelFlow::installLocalModelIfNeeded()
{
    if ((m_installTask && !m_installTask->done()) || m_info.installing || m_info.running ||
        !m_pullingModel.isEmpty())
        return;
    m_installTask = m_scheduler.spawn(installLocalModel());
}

TaskHandle<void> LocalModelFlow::startInstallThenRespond()
{
    m_workspace.status.setStatusText(u"Setting up local model…"_s);
    m_workspace.status.announce(
        u"Setting up the local model first. This is a one-time download of a few gigabytes and "
        "will be ready automatically."_s);
    log(u"Setting up the local model before sending."_s, ActivityStep::Kind::info);
    m_installTask = m_scheduler.spawn(installLocalModel());
    return *m_installTask;
}

void LocalModelFlow::cancelTasks()
{
    if (m_installTask)
        m_installTask->cancel();
    m_installTask.reset();
}

Task<void> LocalModelFlow::installLocalModel()
{
    if (m_info.installing || !m_pullingModel.isEmpty())
        co_return;
    if (m_info.running) {
        // It was found ready after the message that started this was told to wait.
        Q_EMIT installationEnded();
        co_return;
    }
    std::exception_ptr failure;
    try {
        co_await installSteps();
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure) {
        qCWarning(appLog) << "the local model was not set up:" << kindOfFailure(failure);
        reportFailure(failure);
    }
    Q_EMIT installationEnded();
    m_info.installing = false;
    setProgress(m_info.progress, std::nullopt);
    m_workspace.status.setStatusText(m_info.running ? u"Ready"_s : u"Local model not ready"_s);
}

Task<void> LocalModelFlow::installSteps()
{
    const QString model = QString::fromLatin1(standardModel);
    const auto onProgress = [this](const QString &label, std::optional<double> fraction) {
        setProgress(label, fraction);
    };
    const QString opening = u"Setting up the local model. This is a one-time download of a few gigabytes."_s;
    m_info.installing = true;
    setProgress(u"Starting…"_s, std::nullopt);
    log(opening, ActivityStep::Kind::info);
    m_workspace.status.announce(opening);
    co_await m_runtime.ensureRunning(onProgress);
    setProgress(u"Downloading the qwen2.5 model (about 5 GB)…"_s, std::nullopt);
    co_await m_runtime.pull(model, onProgress);
    m_info.running = true;
    m_info.error.clear();
    setProgress(u"The qwen2.5 model is ready."_s, m_info.progressFraction);
    m_installedModels = co_await m_runtime.installedModels();
    log(u"The local model is ready. No limits, everything stays on this Mac."_s, ActivityStep::Kind::success);
    m_workspace.status.announce(u"The local model is ready. You can start chatting."_s);
    m_scheduler.spawn(warmUpLocalModel());
}

void LocalModelFlow::reportFailure(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const Cancelled &) {
        m_info.error.clear();
        log(u"Local model setup was cancelled."_s, ActivityStep::Kind::info);
        return;
    } catch (...) {
        m_info.error = friendlyError(failure);
    }
    log(u"Local model setup failed: "_s + m_info.error, ActivityStep::Kind::error);
    const QString line = u"Local model setup failed. "_s + m_info.error;
    setProgress(line, m_info.progressFraction);
    m_workspace.status.announce(line);
}

Task<void> LocalModelFlow::warmUpLocalModel()
{
    if (m_settings.providerID() != ProviderID::ollama || !m_info.running)
        co_return;
    AIConfiguration config;
    config.provider = ProviderID::ollama;
    config.model = trimmed(m_settings.model());
    config.systemPrompt = m_settings.systemPrompt() + u"\n\nYou are running on: "_s + m_machineSummary();
    config.temperature = m_settings.temperature();
    config.tools = BuiltinTools::all(m_settings.useTools() ? UseTools::yes : UseTools::no);
    try {
        co_await m_turns.runTurn({{APIMessage::User{u"Say OK."_s, {}}}}, config, [](const QString &) {});
    } catch (...) {
        // Only speeds up the first answer; that answer tells what is wrong.
        qCInfo(appLog) << "the local model was not warmed up:" << kindOfCurrentFailure();
    }
}

} // namespace morvane
