#include "localmodel/OllamaRuntime.h"

#include "base/Json.h"
#include "localmodel/InstallError.h"
#include "localmodel/Log.h"
#include "net/HttpClient.h"
#include "net/Log.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {

namespace {

constexpr auto probeLimit = 2s;
/// A list of models is a few kilobytes; a server that sends more is none of Ollama's.
constexpr qint64 maximumListBytes = 4 * 1024 * 1024;

} // namespace

OllamaRuntime::OllamaRuntime(HttpClient &http, QString serverBase, QString dataFolder)
    : m_http(http), m_serverBase(std::move(serverBase)), m_dataFolder(std::move(dataFolder))
{
}

QStringList OllamaRuntime::binaryCandidates() const
{
    return {u"/Applications/Ollama.app/Contents/Resources/ollama"_s, m_dataFolder + u"/ollama"_s,
            u"/opt/homebrew/bin/ollama"_s, u"/usr/local/bin/ollama"_s,
            QDir::homePath() + u"/.local/bin/ollama"_s};
}

bool OllamaRuntime::isBinaryInstalled() const
{
    const QStringList candidates = binaryCandidates();
    return std::any_of(candidates.begin(), candidates.end(), [](const QString &path) {
        const QFileInfo file(path);
        return file.isFile() && file.isExecutable();
    });
}

Task<std::optional<QByteArray>> OllamaRuntime::get(QString path)
{
    HttpRequest request;
    request.url = QUrl(m_serverBase + path);
    request.silenceLimit = probeLimit;
    request.connectLimit = probeLimit;
    try {
        const FetchResult result = co_await m_http.fetch(request, maximumListBytes);
        if (result.status == 200)
            co_return result.body;
    } catch (const TransportError &error) {
        // A server that does not answer is not there.
        qCInfo(localModelLog) << "no answer from the local server:" << reasonOf(error);
    }
    co_return std::nullopt;
}

Task<bool> OllamaRuntime::isServerRunning()
{
    const auto version = co_await get(u"/api/version"_s);
    co_return version.has_value();
}

Task<QStringList> OllamaRuntime::installedModels()
{
    QStringList names;
    const auto body = co_await get(u"/api/tags"_s);
    const auto reply = parseJsonObject(body.value_or(QByteArray()));
    const boost::json::array *models = reply ? arrayMember(*reply, "models") : nullptr;
    if (!models)
        co_return names;
    for (const boost::json::value &model : *models) {
        if (!model.is_object())
            continue;
        if (auto name = stringMember(model.as_object(), "name"))
            names.append(name->remove(u":latest"_s));
    }
    co_return names;
}

Task<void> OllamaRuntime::ensureRunning(ProgressCallback onProgress)
{
    const bool running = co_await isServerRunning();
    if (!running) {
        throw InstallError(u"Ollama is not running on this computer. Install and start Ollama, or "
                           "choose another provider in Settings, then try again."_s);
    }
    onProgress(u"Ollama is already running."_s, std::nullopt);
}

Task<void> OllamaRuntime::pull(QString model, ProgressCallback)
{
    const QStringList models = co_await installedModels();
    if (!models.contains(model)) {
        throw InstallError(u"The %1 model is not installed in Ollama. Download it with the command "
                           "“ollama pull %1”, then try again."_s.arg(model));
    }
}

} // namespace morvane
