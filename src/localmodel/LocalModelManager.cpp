#include "localmodel/LocalModelManager.h"

#include "async/CurrentContext.h"
#include "async/OffMain.h"
#include "async/Race.h"
#include "async/Sleep.h"
#include "base/StartDetached.h"
#include "base/Text.h"
#include "localmodel/DiskSpace.h"
#include "localmodel/InstallError.h"
#include "localmodel/Log.h"
#include "localmodel/ModelName.h"
#include "localmodel/ProgramOutput.h"
#include "localmodel/ProgressPace.h"
#include "localmodel/PullProgress.h"
#include "localmodel/RunProgram.h"
#include "localmodel/RuntimeProgram.h"
#include "net/HttpClient.h"
#include "net/Log.h"

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {

namespace {

constexpr auto probeLimit = 2s;
constexpr int serverRounds = 120;
constexpr auto betweenRounds = 500ms;
constexpr std::chrono::seconds pullLimit = 5400s;
constexpr qint64 installBytes = 1'500'000'000;
constexpr qsizetype longestLabel = 160;
/// A version is some bytes; a server that sends more is none of Ollama's.
constexpr qint64 maximumVersionBytes = 64 * 1024;
constexpr int okStatus = 200;

Task<bool> nothingAfter(std::chrono::milliseconds limit)
{
    co_await sleepFor(limit);
    co_return false;
}

void showPullLine(const QString &line, ProgressPace &pace)
{
    if (const auto progress = parsePullProgress(line))
        pace.report(progress->label, progress->fraction);
    else
        pace.report(firstCharacters(line, longestLabel), std::nullopt);
}

} // namespace

LocalModelManager::LocalModelManager(HttpClient &http, Surroundings surroundings)
    : m_http(http), m_surroundings(std::move(surroundings)),
      m_installer(http, m_surroundings.site, m_surroundings.dataFolder)
{
}

bool LocalModelManager::isBinaryInstalled() const
{
    return isExecutableFile(binaryPath(m_surroundings.candidates));
}

Task<bool> LocalModelManager::isServerRunning()
{
    // The limit is on the whole answer: a server that sends a byte now and then is none.
    co_return co_await race(probe(), nothingAfter(probeLimit));
}

Task<bool> LocalModelManager::probe()
{
    HttpRequest request;
    request.url = QUrl(m_surroundings.serverBase + u"/api/version"_s);
    request.silenceLimit = probeLimit;
    try {
        const FetchResult result = co_await m_http.fetch(request, maximumVersionBytes);
        m_lastAnswer = u"HTTP status %1"_s.arg(result.status);
        co_return result.status == okStatus;
    } catch (const TransportError &error) {
        m_lastAnswer = reasonOf(error);
    }
    co_return false;
}

Task<void> LocalModelManager::requireFreeDiskSpace(qint64 bytes, QString what)
{
    const qint64 free = co_await runOffMain(m_surroundings.freeDiskSpace);
    morvane::requireFreeDiskSpace(bytes, what, free);
}

Task<void> LocalModelManager::ensureRunning(ProgressCallback onProgress)
{
    const bool running = co_await isServerRunning();
    if (running) {
        onProgress(u"Ollama is already running."_s, std::nullopt);
        co_return;
    }
    QString program = binaryPath(m_surroundings.candidates);
    if (!isExecutableFile(program)) {
        onProgress(u"Downloading Ollama (about 1 GB)…"_s, std::nullopt);
        co_await requireFreeDiskSpace(installBytes, u"install Ollama"_s);
        program = co_await m_installer.install(onProgress);
    }
    onProgress(u"Starting Ollama…"_s, std::nullopt);
    co_await startServerDetached(program);
    co_await waitForServer();
}

Task<void> LocalModelManager::startServerDetached(QString path)
{
    if (!isExecutableFile(path))
        co_return;
    const auto environment = serverEnvironment(m_surroundings.serverBase);
    const auto started =
        co_await runOffMain([path, environment] { return startDetached(path, {u"serve"_s}, environment); });
    if (!started)
        qCWarning(localModelLog) << "the server was not started:" << started.error();
}

Task<void> LocalModelManager::waitForServer()
{
    for (int round = 0; round < serverRounds; ++round) {
        const bool running = co_await isServerRunning();
        if (running)
            co_return;
        co_await sleepFor(betweenRounds);
    }
    qCWarning(localModelLog) << "the server does not answer; in its place:" << m_lastAnswer;
    throw InstallError(u"Ollama did not start. Please open the Ollama app and try again."_s);
}

Task<QStringList> LocalModelManager::installedModels()
{
    const QString program = binaryPath(m_surroundings.candidates);
    if (!isExecutableFile(program))
        co_return QStringList();
    ProgramOutput output;
    int status = -1;
    try {
        status = co_await runProgram({program,
                                      {u"list"_s},
                                      runtimeEnvironment(m_surroundings.serverBase),
                                      [&output](QByteArrayView bytes) { output.append(bytes); },
                                      std::nullopt});
    } catch (const InstallError &error) {
        qCWarning(localModelLog) << "the models were not listed:" << kindOfFailure(error);
    }
    co_return status == 0 ? modelsInList(output.text()) : QStringList();
}

Task<void> LocalModelManager::pull(QString model, ProgressCallback onProgress)
{
    const TaskContext context = co_await currentContext();
    ProgressPace pace(context.scheduler->clock(), std::move(onProgress));
    ProgramOutput output;
    const int status = co_await runProgram({binaryPath(m_surroundings.candidates),
                                            {u"pull"_s, model},
                                            runtimeEnvironment(m_surroundings.serverBase),
                                            [&](QByteArrayView bytes) {
                                                output.append(bytes);
                                                if (const auto line = output.takeLine())
                                                    showPullLine(*line, pace);
                                            },
                                            pullLimit});
    if (status == 0)
        co_return;
    const QString tail = output.tail();
    const QString failure = u"The %1 model download failed."_s.arg(model);
    throw InstallError(tail.isEmpty() ? failure : failure + u' ' + tail);
}

Task<void> LocalModelManager::remove(QString model)
{
    return runOnModel(u"rm"_s, model, u"Ollama could not delete the %1 model."_s.arg(model));
}

Task<void> LocalModelManager::unload(QString model)
{
    return runOnModel(u"stop"_s, model, u"Ollama could not free the memory of the %1 model."_s.arg(model));
}

Task<void> LocalModelManager::runOnModel(QString command, QString model, QString failure)
{
    const int status = co_await runProgram({binaryPath(m_surroundings.candidates),
                                            {command, model},
                                            runtimeEnvironment(m_surroundings.serverBase),
                                            {},
                                            std::nullopt});
    if (status != 0)
        throw InstallError(failure);
}

} // namespace morvane
