#include "providers/ProviderCatalog.h"

#include "providers/Endpoints.h"

using namespace Qt::StringLiterals;

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
        return models(Price::free, {u"gemini-3.6-flash"_s, u"gemini-3.6-flash-lite"_s, u"gemini-3.6-pro"_s});
    case ProviderID::openrouter:
        return models(Price::paid, {u"deepseek/deepseek-chat-v3-0324"_s}) +
               models(Price::free,
                      {u"deepseek/deepseek-chat-v3-0324:free"_s, u"meta-llama/llama-3.3-70b-instruct:free"_s,
                       u"google/gemma-3-27b-it:free"_s});
    case ProviderID::groq:
        return models(Price::free,
                      {u"llama-3.3-70b-versatile"_s, u"openai/gpt-oss-120b"_s, u"llama-3.1-8b-instant"_s});
    case ProviderID::ollama:
        return models(Price::free,
                      {u"qwen2.5"_s, u"qwen2.5:14b"_s, u"llama3.1:8b"_s, u"qwen3:4b"_s, u"llama3.2:3b"_s});
    case ProviderID::openai:
        return models(Price::paid, {u"gpt-5-mini"_s, u"gpt-5"_s, u"gpt-4.1-mini"_s});
    case ProviderID::zen:
        return models(Price::free, {u"deepseek-v4-flash-free"_s, u"nemotron-3-ultra-free"_s,
                                    u"mimo-v2.5-free"_s, u"big-pickle"_s});
    case ProviderID::custom:
        break;
    }
    return {};
}

QString providerNote(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return u"Free tier: up to 1,500 requests per day with a 1M-token context window. The "
               "daily allowance resets at midnight Pacific Time."_s;
    case ProviderID::openrouter:
        return u"Free tier: up to 50 requests per day, 20 per minute. A one-time credit "
               "purchase raises the daily limit to 1,000. It resets daily."_s;
    case ProviderID::groq:
        return u"Free tier: roughly 30 requests per minute with daily token caps. Very fast "
               "responses. It resets at midnight UTC."_s;
    case ProviderID::ollama:
        return u"Local Ollama: no limits, nothing leaves this Mac. Requires Ollama.app; models "
               "download once and run fully offline."_s;
    case ProviderID::openai:
        return u"Pay as you go: billed per token on your OpenAI API account. There is no free "
               "tier; you add billing and create a key at "_s +
               QString::fromUtf16(openaiPlatformSite) + u'.';
    case ProviderID::zen:
        return u"OpenCode Zen is the OpenCode team's curated gateway. A rotating set of models (names ending "
               u"in "
               "-free) costs nothing; paid models are billed per request from credits on your OpenCode "
               "account. "
               "Note: during their free period, some free models may use your prompts to improve themselves, "
               "so "
               "avoid sharing anything private there."_s;
    case ProviderID::custom:
        break;
    }
    return u"Connect any OpenAI-compatible server: pick a preset below or paste an API base "
           "URL. Local servers like LM Studio need no key; hosted ones use the key they gave "
           "you. The model list is loaded from your server automatically."_s;
}

QList<CustomPreset> customPresets()
{
    return {
        {u"GitHub Models"_s, u"https://models.github.ai/inference"_s, true,
         u"free tier with a GitHub personal access token"_s},
        {u"LM Studio"_s, u"http://localhost:1234/v1"_s, false, u"local models running on this Mac"_s},
        {u"NVIDIA NIM"_s, u"https://integrate.api.nvidia.com/v1"_s, true, u"free trial credits"_s},
        {u"DeepSeek"_s, u"https://api.deepseek.com/v1"_s, true, u"pay per token"_s},
        {u"Mistral"_s, u"https://api.mistral.ai/v1"_s, true, u"has a free tier"_s},
    };
}

} // namespace morvane
