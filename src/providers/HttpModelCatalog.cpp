#include "providers/HttpModelCatalog.h"

#include "async/OffMain.h"
#include "async/Race.h"
#include "async/Sleep.h"
#include "net/HttpClient.h"
#include "net/Log.h"
#include "providers/CustomServerURL.h"
#include "providers/Log.h"
#include "providers/ModelList.h"

#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace morvane {

namespace {

constexpr auto silenceLimit = 10s;
/// A server that sends a byte now and then is never silent.
constexpr auto wholeLimit = 30s;
/// The longest honest list, of some hundred models with their descriptions, has about one.
constexpr qint64 maximumListBytes = 16 * 1024 * 1024;

using Body = std::optional<QByteArray>;

Task<Body> bodyOf(HttpClient *client, HttpRequest request)
{
    try {
        FetchResult result = co_await client->fetch(std::move(request), maximumListBytes);
        if (result.status == 200)
            co_return std::move(result.body);
        qCWarning(providersLog) << "no list of models: status" << result.status;
    } catch (const TransportError &error) {
        // Whoever asks has a list of its own to fall back on.
        qCWarning(providersLog) << "no list of models:" << reasonOf(error);
    }
    co_return std::nullopt;
}

Task<Body> nothingAfterAll()
{
    co_await sleepFor(wholeLimit);
    qCWarning(providersLog) << "no list of models: it was not complete after" << wholeLimit.count() << "s";
    co_return std::nullopt;
}

} // namespace

HttpModelCatalog::HttpModelCatalog(HttpClient &client, Endpoints endpoints)
    : m_client(client), m_endpoints(std::move(endpoints))
{
}

Task<CatalogModels> HttpModelCatalog::load(ProviderID provider, QString apiKey, QString baseURL)
{
    switch (provider) {
    case ProviderID::gemini:
        return gemini(std::move(apiKey));
    case ProviderID::openrouter:
        return openRouter();
    case ProviderID::groq:
        return groq(std::move(apiKey));
    case ProviderID::ollama:
        return ollama();
    case ProviderID::openai:
        return openAI(std::move(apiKey));
    case ProviderID::zen:
        return zen();
    case ProviderID::custom:
        break;
    }
    return custom(std::move(baseURL), std::move(apiKey));
}

Task<CatalogModels> HttpModelCatalog::openRouter()
{
    return list(ProviderID::openrouter, QUrl(m_endpoints.modelList(ProviderID::openrouter)), {});
}

Task<CatalogModels> HttpModelCatalog::groq(QString apiKey)
{
    return list(ProviderID::groq, QUrl(m_endpoints.modelList(ProviderID::groq)), std::move(apiKey));
}

Task<CatalogModels> HttpModelCatalog::gemini(QString apiKey)
{
    HttpRequest request;
    request.url = QUrl(m_endpoints.modelList(ProviderID::gemini));
    if (!apiKey.isEmpty())
        request.headers.set("x-goog-api-key", apiKey.toUtf8());
    Body body = co_await fetch(std::move(request));
    if (!body)
        co_return std::nullopt;
    co_return co_await runOffMain(
        [body = std::move(*body)] { return modelListFromReply(ProviderID::gemini, body); });
}

Task<CatalogModels> HttpModelCatalog::openAI(QString apiKey)
{
    return list(ProviderID::openai, QUrl(m_endpoints.modelList(ProviderID::openai)), std::move(apiKey));
}

Task<CatalogModels> HttpModelCatalog::ollama()
{
    return list(ProviderID::ollama, QUrl(m_endpoints.modelList(ProviderID::ollama)), {});
}

Task<CatalogModels> HttpModelCatalog::zen()
{
    return list(ProviderID::zen, QUrl(m_endpoints.modelList(ProviderID::zen)), {});
}

Task<CatalogModels> HttpModelCatalog::custom(QString baseURL, QString apiKey)
{
    const auto url = modelsListURL(baseURL);
    if (!url)
        co_return std::nullopt;
    co_return co_await list(ProviderID::custom, *url, std::move(apiKey));
}

Task<CatalogModels> HttpModelCatalog::list(ProviderID provider, QUrl url, QString bearer)
{
    Body body = co_await get(std::move(url), std::move(bearer));
    if (!body)
        co_return std::nullopt;
    co_return co_await runOffMain(
        [provider, body = std::move(*body)] { return modelListFromReply(provider, body); });
}

Task<std::optional<QByteArray>> HttpModelCatalog::get(QUrl url, QString bearer)
{
    HttpRequest request;
    request.url = std::move(url);
    if (!bearer.isEmpty())
        request.headers.set("Authorization", "Bearer " + bearer.toUtf8());
    return fetch(std::move(request));
}

Task<std::optional<QByteArray>> HttpModelCatalog::fetch(HttpRequest request)
{
    request.silenceLimit = silenceLimit;
    request.connectLimit = silenceLimit;
    return race(bodyOf(&m_client, std::move(request)), nothingAfterAll());
}

} // namespace morvane
