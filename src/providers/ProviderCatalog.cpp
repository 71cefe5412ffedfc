#include "providers/ProviderCatalog.h"

#include "providers/Endpoints.h"

namespace morvane {
namespace {

enum class Price { free, paid };

QList<ProviderModel> models(Price price, const QStringList &names)
{
    QList<ProviderModel> result;
    for (const QString &name : names)
        result.append(ProviderModel{name, price == Price::free});
    return result;
}

} // namespace

QList<ProviderModel> curatedModels(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return models(Price::free,
                      {QStringLiteral("gemini-3.6-flash"), QStringLiteral("gemini-3.6-flash-lite"),
                       QStringLiteral("gemini-3.6-pro")});
    case ProviderID::openrouter:
        return models(Price::paid, {QStringLiteral("deepseek/deepseek-chat-v3-0324")}) +
               models(Price::free, {QStringLiteral("deepseek/deepseek-chat-v3-0324:free"),
                                    QStringLiteral("meta-llama/llama-3.3-70b-instruct:free"),
                                    QStringLiteral("google/gemma-3-27b-it:free")});
    case ProviderID::groq:
        return models(Price::free,
                      {QStringLiteral("llama-3.3-70b-versatile"), QStringLiteral("openai/gpt-oss-120b"),
                       QStringLiteral("llama-3.1-8b-instant")});
    case ProviderID::ollama:
        return models(Price::free, {QStringLiteral("qwen2.5"), QStringLiteral("qwen2.5:14b"),
                                    QStringLiteral("llama3.1:8b"), QStringLiteral("qwen3:4b"),
                                    QStringLiteral("llama3.2:3b")});
    case ProviderID::openai:
        return models(Price::paid, {QStringLiteral("gpt-5-mini"), QStringLiteral("gpt-5"),
                                    QStringLiteral("gpt-4.1-mini")});
    case ProviderID::zen:
        return models(Price::free,
                      {QStringLiteral("deepseek-v4-flash-free"), QStringLiteral("nemotron-3-ultra-free"),
                       QStringLiteral("mimo-v2.5-free"), QStringLiteral("big-pickle")});
    case ProviderID::custom:
        break;
    }
    return {};
}

QString providerNote(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return QStringLiteral("Free tier: up to 1,500 requests per day with a 1M-token context window. The "
                              "daily allowance resets at midnight Pacific Time.");
    case ProviderID::openrouter:
        return QStringLiteral("Free tier: up to 50 requests per day, 20 per minute. A one-time credit "
                              "purchase raises the daily limit to 1,000. It resets daily.");
    case ProviderID::groq:
        return QStringLiteral("Free tier: roughly 30 requests per minute with daily token caps. Very fast "
                              "responses. It resets at midnight UTC.");
    case ProviderID::ollama:
        return QStringLiteral("Local Ollama: no limits, nothing leaves this Mac. Requires Ollama.app; models "
                              "download once and run fully offline.");
    case ProviderID::openai:
        return QStringLiteral("Pay as you go: billed per token on your OpenAI API account. There is no free "
                              "tier; you add billing and create a key at ") +
               QString::fromUtf16(openaiPlatformSite) + QLatin1Char('.');
    case ProviderID::zen:
        return QStringLiteral(
            "OpenCode Zen is the OpenCode team's curated gateway. A rotating set of models (names ending in "
            "-free) costs nothing; paid models are billed per request from credits on your OpenCode account. "
            "Note: during their free period, some free models may use your prompts to improve themselves, so "
            "avoid sharing anything private there.");
    case ProviderID::custom:
        break;
    }
    return QStringLiteral("Connect any OpenAI-compatible server: pick a preset below or paste an API base "
                          "URL. Local servers like LM Studio need no key; hosted ones use the key they gave "
                          "you. The model list is loaded from your server automatically.");
}

QList<CustomPreset> customPresets()
{
    return {
        {QStringLiteral("GitHub Models"), QStringLiteral("https://models.github.ai/inference"), true,
         QStringLiteral("free tier with a GitHub personal access token")},
        {QStringLiteral("LM Studio"), QStringLiteral("http://localhost:1234/v1"), false,
         QStringLiteral("local models running on this Mac")},
        {QStringLiteral("NVIDIA NIM"), QStringLiteral("https://integrate.api.nvidia.com/v1"), true,
         QStringLiteral("free trial credits")},
        {QStringLiteral("DeepSeek"), QStringLiteral("https://api.deepseek.com/v1"), true,
         QStringLiteral("pay per token")},
        {QStringLiteral("Mistral"), QStringLiteral("https://api.mistral.ai/v1"), true,
         QStringLiteral("has a free tier")},
    };
}

} // namespace morvane
