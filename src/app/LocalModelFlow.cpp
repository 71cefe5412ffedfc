#include "app/LocalModelFlow.h"

#include "app/FriendlyError.h"
#include "app/Log.h"
#include "app/TurnRunner.h"
#include "async/Cancelled.h"
#include "async/Scheduler.h"
#include "base/Overloaded.h"
#include "base/Text.h"
#include "localmodel/LocalModelRuntime.h"
#include "localmodel/ModelName.h"
#include "store/SettingsStore.h"
#include "tools/BuiltinTools.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// What must be free for the standard model, a download of some 5 GB.
constexpr qint64 standardModelBytes = 6'000'000'000;

/// How a task has failed or was cancelled; null if it has done its work.
Task<std::exception_ptr> failureOf(Task<void> task)
{
    try {
        co_await std::move(task);
    } catch (...) {
        co_return std::current_exception();
    }
    co_return nullptr;
}

} // namespace

LocalModelFlow::LocalModelFlow(Scheduler &scheduler, SettingsStore &settings, LocalModelRuntime &runtime,
                               Workspace &workspace, TurnRunner &turns,
                               std::function<QString()> machineSummary)
    : m_scheduler(scheduler), m_settings(settings), m_runtime(runtime), m_workspace(workspace),
      m_turns(turns), m_machineSummary(std::move(machineSummary))
{
}

QString LocalModelFlow::pullingModel() const
{
    const auto *pulling = std::get_if<Pulling>(&m_phase);
    return pulling ? pulling->model : QString();
}

bool LocalModelFlow::isWorking() const
{
    return std::visit(Overloaded{
                          [](const Idle &) { return false; },
                          [](const Installing &) { return true; },
                          [](const Pulling &) { return true; },
                          [](const Ending &ending) { return ending.next.index() != 0; },
                      },
                      m_phase);
}

void LocalModelFlow::setPhase(Phase phase)
{
    m_phase = std::move(phase);
    m_info.installing = std::holds_alternative<Installing>(m_phase);
    m_info.progressFraction.reset();
    Q_EMIT changed();
}

void LocalModelFlow::setProgress(const QString &label, std::optional<double> fraction)
{
    m_info.progress = label;
    m_info.progressFraction = fraction;
    Q_EMIT changed();
}

QString LocalModelFlow::wantedModel() const
{
    const QString model = trimmed(m_settings.model());
    return model.isEmpty() ? QString::fromLatin1(standardModel) : model;
}

void LocalModelFlow::refreshLocalModel()
{
    m_scheduler.spawn(refresh());
}

void LocalModelFlow::refreshThenInstall(Occasion occasion)
{
    // What is there already must be known first, or its installation would be announced.
    m_occasion = std::max(m_occasion.value_or(occasion), occasion);
    refreshLocalModel();
}

void LocalModelFlow::installFor(Occasion occasion)
{
    if (m_info.running || (occasion != Occasion::onboarding && m_settings.providerID() != ProviderID::ollama))
        return;
    install(occasion == Occasion::programStart ? Opening::whenSomethingComes : Opening::atOnce);
}

Task<void> LocalModelFlow::refresh()
{
    const int number = ++m_lastRefresh;
    const bool serverRunning = co_await m_runtime.isServerRunning();
    QStringList models = m_installedModels;
    if (serverRunning)
        models = co_await m_runtime.installedModels();
    if (number != m_lastRefresh)
        co_return;
    const QString name = wantedModel();
    m_installedModels = models;
    m_info.running = serverRunning && containsModel(models, name);
    // What goes on tells its own progress.
    const bool isIdle = std::holds_alternative<Idle>(m_phase);
    if (m_info.running) {
        m_info.error.clear();
        m_scheduler.spawn(warmUpLocalModel());
    }
    if (!isIdle)
        Q_EMIT changed();
    else if (m_info.running)
        setProgress(u"The %1 model is ready."_s.arg(name), std::nullopt);
    else if (serverRunning)
        setProgress(u"Ollama is running, but the %1 model is not downloaded yet."_s.arg(name), std::nullopt);
    else
        setProgress(m_runtime.isBinaryInstalled() ? u"Ollama is not running."_s
                                                  : u"Ollama is not installed yet."_s,
                    std::nullopt);
    if (const auto occasion = std::exchange(m_occasion, std::nullopt))
        installFor(*occasion);
}

void LocalModelFlow::installLocalModelIfNeeded()
{
    if (!m_info.running)
        install(Opening::atOnce);
}

void LocalModelFlow::startInstallThenRespond()
{
    m_workspace.status.setStatusText(u"Setting up local model…"_s);
    m_workspace.status.announce(
        u"Setting up the local model first. This is a one-time download of a few gigabytes and "
        "will be ready automatically."_s);
    log(u"Setting up the local model before sending."_s, ActivityStep::Kind::info);
    install(Opening::atOnce);
}

void LocalModelFlow::install(Opening opening)
{
    std::visit(Overloaded{
                   [&](Idle &) { setPhase(Installing{m_scheduler.spawn(installLocalModel(opening))}); },
                   [](Installing &) {},
                   [](Pulling &) {},
                   [](Ending &ending) { ending.next = Ending::Install{}; },
               },
               m_phase);
}

void LocalModelFlow::pullLocalModelIfNeeded(const QString &model)
{
    pull(model);
}

void LocalModelFlow::pull(const QString &model)
{
    std::visit(Overloaded{
                   [&](Idle &) { setPhase(Pulling{model, m_scheduler.spawn(pullLocalModel(model))}); },
                   [](Installing &) {},
                   [](Pulling &) {},
                   [&](Ending &ending) { ending.next = Ending::Pull{model}; },
               },
               m_phase);
}

void LocalModelFlow::cancelTasks()
{
    m_occasion.reset();
    Phase left = m_phase;
    std::visit(Overloaded{
                   [](Idle &) {},
                   [this](Installing &installing) {
                       setPhase(Ending{});
                       installing.task.cancel();
                   },
                   [this](Pulling &pulling) {
                       setPhase(Ending{});
                       pulling.task.cancel();
                   },
                   [this](Ending &) { setPhase(Ending{}); },
               },
               left);
}

void LocalModelFlow::finishPhase()
{
    auto next = decltype(Ending::next)();
    if (const auto *ending = std::get_if<Ending>(&m_phase))
        next = ending->next;
    setPhase(Idle{});
    std::visit(Overloaded{
                   [this](const Ending::Nothing &) { Q_EMIT installationEnded(); },
                   [this](const Ending::Install &) { install(Opening::atOnce); },
                   [this](const Ending::Pull &asked) { pull(asked.model); },
               },
               next);
}

Task<void> LocalModelFlow::installLocalModel(Opening opening)
{
    if (m_info.running) {
        // It was found ready after the message that started this was told to wait.
        finishPhase();
        co_return;
    }
    const std::exception_ptr failure = co_await failureOf(installSteps(opening));
    if (failure) {
        qCWarning(appLog) << "the local model was not set up:" << kindOfFailure(failure);
        reportFailure(failure, u"Local model setup was cancelled."_s, u"Local model setup failed"_s);
    }
    finishPhase();
    if (std::holds_alternative<Idle>(m_phase))
        m_workspace.status.setStatusText(m_info.running ? u"Ready"_s : u"Local model not ready"_s);
}

Task<void> LocalModelFlow::installSteps(Opening opening)
{
    const QString beginning =
        u"Setting up the local model. This is a one-time download of a few gigabytes."_s;
    bool isAnnounced = false;
    const auto announceOnce = [&] {
        if (!std::exchange(isAnnounced, true))
            m_workspace.status.announce(beginning);
    };
    const auto onProgress = [&](const QString &label, std::optional<double> fraction) {
        if (fraction)
            announceOnce();
        setProgress(label, fraction);
    };
    setProgress(u"Starting…"_s, std::nullopt);
    log(beginning, ActivityStep::Kind::info);
    if (opening == Opening::atOnce)
        announceOnce();
    co_await m_runtime.ensureRunning(onProgress);
    m_installedModels = co_await m_runtime.installedModels();
    QString model = wantedModel();
    // After a restart of the computer nothing but the server may be missing.
    if (!containsModel(m_installedModels, model)) {
        model = QString::fromLatin1(standardModel);
        setProgress(u"Downloading the qwen2.5 model (about 5 GB)…"_s, std::nullopt);
        co_await m_runtime.requireFreeDiskSpace(standardModelBytes, u"install the qwen2.5 model"_s);
        co_await m_runtime.pull(model, onProgress);
        m_installedModels = co_await m_runtime.installedModels();
    }
    setReady(model);
    log(u"The local model is ready. No limits, everything stays on this Mac."_s, ActivityStep::Kind::success);
    m_workspace.status.announce(u"The local model is ready. You can start chatting."_s);
}

void LocalModelFlow::setReady(const QString &model)
{
    ++m_lastRefresh;
    m_occasion.reset();
    m_info.running = true;
    m_info.error.clear();
    setProgress(u"The %1 model is ready."_s.arg(model), std::nullopt);
    m_scheduler.spawn(warmUpLocalModel());
}

Task<void> LocalModelFlow::pullLocalModel(QString model)
{
    const std::exception_ptr failure = co_await failureOf(pullSteps(model));
    if (failure) {
        qCWarning(appLog) << "a local model was not downloaded:" << kindOfFailure(failure);
        const QString subject = u"Downloading the %1 model "_s.arg(model);
        reportFailure(failure, subject + u"was cancelled."_s, subject + u"failed"_s);
    }
    finishPhase();
}

Task<void> LocalModelFlow::pullSteps(QString model)
{
    log(u"Downloading the %1 model…"_s.arg(model), ActivityStep::Kind::info);
    m_workspace.status.announce(u"Downloading the %1 model. This may take a few minutes."_s.arg(model));
    setProgress(u"Downloading the %1 model…"_s.arg(model), std::nullopt);
    const auto onProgress = [this](const QString &label, std::optional<double> fraction) {
        setProgress(label, fraction);
    };
    // The program asks the server to download, so that without one there would be nothing but an error.
    const bool serverRunning = co_await m_runtime.isServerRunning();
    if (!serverRunning)
        co_await m_runtime.ensureRunning(onProgress);
    co_await m_runtime.pull(model, onProgress);
    m_settings.setModel(model);
    m_installedModels = co_await m_runtime.installedModels();
    setReady(model);
    log(u"The %1 model is installed and set as the active model."_s.arg(model), ActivityStep::Kind::success);
    m_workspace.status.announce(u"The %1 model is installed and now active."_s.arg(model));
}

void LocalModelFlow::deleteLocalModel(const QString &model)
{
    if (std::holds_alternative<Pulling>(m_phase) || m_deleting.contains(model))
        return;
    m_deleting.insert(model);
    m_scheduler.spawn(deleteModel(model));
}

Task<void> LocalModelFlow::deleteModel(QString model)
{
    const std::exception_ptr failure = co_await failureOf(m_runtime.remove(model));
    m_deleting.remove(model);
    if (failure) {
        tellRefusal(u"Could not delete the %1 model"_s.arg(model), failure);
        co_return;
    }
    m_installedModels = co_await m_runtime.installedModels();
    if (containsModel({trimmed(m_settings.model())}, model)) {
        QStringList others = m_installedModels;
        others.removeIf([&model](const QString &one) { return containsModel({one}, model); });
        m_settings.setModel(others.isEmpty() ? QString::fromLatin1(standardModel) : others.constFirst());
    }
    log(u"Deleted the %1 model."_s.arg(model), ActivityStep::Kind::success);
    m_workspace.status.announce(u"The %1 model was deleted."_s.arg(model));
    co_await refresh();
}

void LocalModelFlow::freeMemory()
{
    m_scheduler.spawn(unloadModel(wantedModel()));
}

Task<void> LocalModelFlow::unloadModel(QString model)
{
    const std::exception_ptr failure = co_await failureOf(m_runtime.unload(model));
    if (failure) {
        tellRefusal(u"Could not free the memory of the %1 model"_s.arg(model), failure);
        co_return;
    }
    const QString line = u"The memory of the %1 model is free."_s.arg(model);
    log(line, ActivityStep::Kind::success);
    m_workspace.status.announce(line);
}

void LocalModelFlow::tellRefusal(const QString &what, const std::exception_ptr &failure)
{
    qCWarning(appLog) << "a local model was left as it was:" << kindOfFailure(failure);
    m_workspace.activity.log(what + u": "_s, friendlyError(failure), ActivityStep::Kind::error);
    m_workspace.status.announce(what + u'.');
}

void LocalModelFlow::reportFailure(const std::exception_ptr &failure, const QString &cancelled,
                                   const QString &failed)
{
    try {
        std::rethrow_exception(failure);
    } catch (const Cancelled &) {
        m_info.error.clear();
        log(cancelled, ActivityStep::Kind::info);
        return;
    } catch (...) {
        m_info.error = friendlyError(failure);
    }
    m_workspace.activity.log(failed + u": "_s, m_info.error, ActivityStep::Kind::error);
    const QString line = u"%1. %2"_s.arg(failed, m_info.error);
    setProgress(line, std::nullopt);
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
