#pragma once

#include "model/ProviderID.h"

#include <QString>

namespace morvane {

/// Every address outside this computer that the model providers need, and the local model server's. One
/// constant each; tests pass their own.
struct Endpoints {
    // Origins, without a slash at the end.
    QString gemini = QStringLiteral("https://generativelanguage.googleapis.com");
    QString openrouter = QStringLiteral("https://openrouter.ai");
    QString groq = QStringLiteral("https://api.groq.com");
    QString ollama = QStringLiteral("http://localhost:11434");
    QString openai = QStringLiteral("https://api.openai.com");
    QString zen = QStringLiteral("https://opencode.ai");

    /// Morvane's own site, told to OpenRouter as the origin of requests.
    QString productSite = QStringLiteral("https://morvane.example");
    QString productDocumentation = QStringLiteral("https://morvane.example/docs");

    /// The address that takes chat requests; empty for `gemini` and `custom`, which have none of this kind.
    QString chatCompletions(ProviderID provider) const;

    /// The address of the list of models; empty for `custom`, whose server the user names.
    QString modelList(ProviderID provider) const;

    /// The page where a user gets a key (for `ollama` its home page, for `custom` Morvane's documentation).
    QString signupURL(ProviderID provider) const;
};

/// The site of OpenAI's accounts as the user reads it.
inline constexpr char16_t openaiPlatformSite[] = u"platform.openai.com";

/// Shown where a custom base URL is missing or wrong.
inline constexpr char16_t exampleBaseURL[] = u"https://api.example.com/v1";

} // namespace morvane
