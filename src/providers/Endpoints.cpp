#include "providers/Endpoints.h"

namespace morvane {

QString Endpoints::chatCompletions(ProviderID provider) const
{
    switch (provider) {
    case ProviderID::openrouter:
        return openrouter + QStringLiteral("/api/v1/chat/completions");
    case ProviderID::groq:
        return groq + QStringLiteral("/openai/v1/chat/completions");
    case ProviderID::ollama:
        return ollama + QStringLiteral("/v1/chat/completions");
    case ProviderID::openai:
        return openai + QStringLiteral("/v1/chat/completions");
    case ProviderID::zen:
        return zen + QStringLiteral("/zen/v1/chat/completions");
    case ProviderID::gemini:
    case ProviderID::custom:
        break;
    }
    return {};
}

QString Endpoints::modelList(ProviderID provider) const
{
    switch (provider) {
    case ProviderID::gemini:
        return gemini + QStringLiteral("/v1beta/models");
    case ProviderID::openrouter:
        return openrouter + QStringLiteral("/api/v1/models");
    case ProviderID::groq:
        return groq + QStringLiteral("/openai/v1/models");
    case ProviderID::ollama:
        return ollama + QStringLiteral("/api/tags");
    case ProviderID::openai:
        return openai + QStringLiteral("/v1/models");
    case ProviderID::zen:
        return zen + QStringLiteral("/zen/v1/models");
    case ProviderID::custom:
        break;
    }
    return {};
}

QString Endpoints::signupURL(ProviderID provider) const
{
    switch (provider) {
    case ProviderID::gemini:
        return QStringLiteral("https://aistudio.google.com/apikey");
    case ProviderID::openrouter:
        return QStringLiteral("https://openrouter.ai/keys");
    case ProviderID::groq:
        return QStringLiteral("https://console.groq.com/keys");
    case ProviderID::ollama:
        return QStringLiteral("https://ollama.com");
    case ProviderID::openai:
        return QStringLiteral("https://platform.openai.com/api-keys");
    case ProviderID::zen:
        return QStringLiteral("https://opencode.ai/auth");
    case ProviderID::custom:
        break;
    }
    return productDocumentation;
}

} // namespace morvane
