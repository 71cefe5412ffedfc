#include "providers/Endpoints.h"

using namespace Qt::StringLiterals;

namespace morvane {

QString Endpoints::chatCompletions(ProviderID provider) const
{
    switch (provider) {
    case ProviderID::openrouter:
        return openrouter + u"/api/v1/chat/completions"_s;
    case ProviderID::groq:
        return groq + u"/openai/v1/chat/completions"_s;
    case ProviderID::ollama:
        return ollama + u"/v1/chat/completions"_s;
    case ProviderID::openai:
        return openai + u"/v1/chat/completions"_s;
    case ProviderID::zen:
        return zen + u"/zen/v1/chat/completions"_s;
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
        return gemini + u"/v1beta/models"_s;
    case ProviderID::openrouter:
        return openrouter + u"/api/v1/models"_s;
    case ProviderID::groq:
        return groq + u"/openai/v1/models"_s;
    case ProviderID::ollama:
        return ollama + u"/api/tags"_s;
    case ProviderID::openai:
        return openai + u"/v1/models"_s;
    case ProviderID::zen:
        return zen + u"/zen/v1/models"_s;
    case ProviderID::custom:
        break;
    }
    return {};
}

QString Endpoints::signupURL(ProviderID provider) const
{
    switch (provider) {
    case ProviderID::gemini:
        return u"https://aistudio.google.com/apikey"_s;
    case ProviderID::openrouter:
        return u"https://openrouter.ai/keys"_s;
    case ProviderID::groq:
        return u"https://console.groq.com/keys"_s;
    case ProviderID::ollama:
        return u"https://ollama.com"_s;
    case ProviderID::openai:
        return u"https://platform.openai.com/api-keys"_s;
    case ProviderID::zen:
        return u"https://opencode.ai/auth"_s;
    case ProviderID::custom:
        break;
    }
    return productDocumentation;
}

} // namespace morvane
