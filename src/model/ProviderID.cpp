#include "model/ProviderID.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

QString rawValue(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return u"gemini"_s;
    case ProviderID::openrouter:
        return u"openrouter"_s;
    case ProviderID::groq:
        return u"groq"_s;
    case ProviderID::ollama:
        return u"ollama"_s;
    case ProviderID::openai:
        return u"openai"_s;
    case ProviderID::zen:
        return u"zen"_s;
    case ProviderID::custom:
        return u"custom"_s;
    }
    std::unreachable();
}

std::optional<ProviderID> providerFromRawValue(QStringView text)
{
    const auto *const found =
        std::find_if(allProviders.begin(), allProviders.end(),
                     [text](ProviderID provider) { return rawValue(provider) == text; });
    return found == allProviders.end() ? std::nullopt : std::optional(*found);
}

QString displayName(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return u"Google Gemini"_s;
    case ProviderID::openrouter:
        return u"OpenRouter"_s;
    case ProviderID::groq:
        return u"Groq"_s;
    case ProviderID::ollama:
        return u"Local (Ollama)"_s;
    case ProviderID::openai:
        return u"OpenAI"_s;
    case ProviderID::zen:
        return u"OpenCode Zen"_s;
    case ProviderID::custom:
        return u"Custom"_s;
    }
    std::unreachable();
}

QString defaultModel(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return u"gemini-3.6-flash"_s;
    case ProviderID::openrouter:
        return u"deepseek/deepseek-chat-v3-0324"_s;
    case ProviderID::groq:
        return u"llama-3.3-70b-versatile"_s;
    case ProviderID::ollama:
        return u"qwen2.5"_s;
    case ProviderID::openai:
        return u"gpt-5-mini"_s;
    case ProviderID::zen:
        return u"deepseek-v4-flash-free"_s;
    case ProviderID::custom:
        return QString();
    }
    std::unreachable();
}

} // namespace morvane
