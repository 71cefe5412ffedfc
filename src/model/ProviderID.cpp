#include "model/ProviderID.h"

#include <algorithm>
#include <utility>

namespace morvane {

QString rawValue(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return QStringLiteral("gemini");
    case ProviderID::openrouter:
        return QStringLiteral("openrouter");
    case ProviderID::groq:
        return QStringLiteral("groq");
    case ProviderID::ollama:
        return QStringLiteral("ollama");
    case ProviderID::openai:
        return QStringLiteral("openai");
    case ProviderID::zen:
        return QStringLiteral("zen");
    case ProviderID::custom:
        return QStringLiteral("custom");
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
        return QStringLiteral("Google Gemini");
    case ProviderID::openrouter:
        return QStringLiteral("OpenRouter");
    case ProviderID::groq:
        return QStringLiteral("Groq");
    case ProviderID::ollama:
        return QStringLiteral("Local (Ollama)");
    case ProviderID::openai:
        return QStringLiteral("OpenAI");
    case ProviderID::zen:
        return QStringLiteral("OpenCode Zen");
    case ProviderID::custom:
        return QStringLiteral("Custom");
    }
    std::unreachable();
}

QString defaultModel(ProviderID provider)
{
    switch (provider) {
    case ProviderID::gemini:
        return QStringLiteral("gemini-3.6-flash");
    case ProviderID::openrouter:
        return QStringLiteral("deepseek/deepseek-chat-v3-0324");
    case ProviderID::groq:
        return QStringLiteral("llama-3.3-70b-versatile");
    case ProviderID::ollama:
        return QStringLiteral("qwen2.5");
    case ProviderID::openai:
        return QStringLiteral("gpt-5-mini");
    case ProviderID::zen:
        return QStringLiteral("deepseek-v4-flash-free");
    case ProviderID::custom:
        return QString();
    }
    std::unreachable();
}

} // namespace morvane
