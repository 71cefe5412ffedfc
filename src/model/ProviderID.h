#pragma once

#include <QString>
#include <QStringView>
#include <array>
#include <optional>

namespace morvane {

/// The model providers, in the order in which they are offered.
enum class ProviderID { gemini, openrouter, groq, ollama, openai, zen, custom };

/// Every provider, in declaration order.
inline constexpr std::array allProviders{ProviderID::gemini, ProviderID::openrouter, ProviderID::groq,
                                         ProviderID::ollama, ProviderID::openai,     ProviderID::zen,
                                         ProviderID::custom};

/// The stored text of a provider ("gemini", "openrouter", …): setting value and suffix of its key's name.
QString rawValue(ProviderID provider);

/// The provider with this stored text, or nothing for any other text.
std::optional<ProviderID> providerFromRawValue(QStringView text);

/// The name that the user sees, such as "Local (Ollama)".
QString displayName(ProviderID provider);

/// The model that a provider starts with; empty for `custom`.
QString defaultModel(ProviderID provider);

} // namespace morvane
