#include "providers/ProviderRequest.h"

#include "providers/AIServiceError.h"
#include "providers/CustomServerURL.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The longest silence on the connection; local models take minutes to load.
constexpr std::chrono::seconds silenceLimit{300};

QUrl openAIURL(const AIConfiguration &config, const Endpoints &endpoints)
{
    if (config.provider == ProviderID::custom) {
        auto url = chatCompletionsURL(config.baseURL);
        if (!url)
            throw AIServiceError(AIServiceError::Api{
                u"The custom provider's API base URL is missing or invalid. Open Settings and "
                "check it (for example "_s +
                QString::fromUtf16(exampleBaseURL) + u")."_s});
        return *url;
    }
    QUrl url(endpoints.chatCompletions(config.provider), QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        throw AIServiceError(AIServiceError::Api{u"Invalid provider URL."_s});
    return url;
}

HttpRequest jsonRequest(const QUrl &url)
{
    HttpRequest request;
    request.method = "POST";
    request.url = url;
    request.headers.set("Content-Type", "application/json");
    request.silenceLimit = silenceLimit;
    return request;
}

} // namespace

HttpRequest openAIRequest(const AIConfiguration &config, const Endpoints &endpoints)
{
    HttpRequest request = jsonRequest(openAIURL(config, endpoints));
    // The local server never gets a key, not even a stored one.
    if (config.provider != ProviderID::ollama && !config.apiKey.isEmpty())
        request.headers.set("Authorization", "Bearer " + config.apiKey.toUtf8());
    if (config.provider == ProviderID::openrouter) {
        request.headers.set("X-Title", "Morvane (macOS)");
        request.headers.set("HTTP-Referer", endpoints.productSite.toUtf8());
    }
    return request;
}

HttpRequest geminiRequest(const AIConfiguration &config, const Endpoints &endpoints)
{
    const QUrl url(endpoints.gemini + u"/v1beta/models/"_s + config.model +
                       u":streamGenerateContent?alt=sse"_s,
                   QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        throw AIServiceError(AIServiceError::Api{u"Invalid Gemini model or API URL."_s});
    HttpRequest request = jsonRequest(url);
    request.headers.set("x-goog-api-key", config.apiKey.toUtf8());
    return request;
}

} // namespace morvane
