#include "model/ProviderID.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace morvane {
namespace {

TEST(ProviderIDTest, ProvidersAreOfferedInTheirOrder)
{
    QStringList values;
    for (const ProviderID provider : allProviders)
        values.append(rawValue(provider));
    EXPECT_EQ(values.join(u' '), QStringLiteral("gemini openrouter groq ollama openai zen custom"));
}

TEST(ProviderIDTest, StoredTextGivesTheProviderBack)
{
    for (const ProviderID provider : allProviders)
        EXPECT_EQ(providerFromRawValue(rawValue(provider)), provider);
}

TEST(ProviderIDTest, UnknownTextGivesNone)
{
    for (const QStringView text : {u"", u"Ollama", u"ollama ", u"anthropic"})
        EXPECT_EQ(providerFromRawValue(text), std::nullopt) << text.toString().toStdString();
}

TEST(ProviderIDTest, HasTheNamesThatTheUserSees)
{
    EXPECT_EQ(displayName(ProviderID::gemini), QStringLiteral("Google Gemini"));
    EXPECT_EQ(displayName(ProviderID::openrouter), QStringLiteral("OpenRouter"));
    EXPECT_EQ(displayName(ProviderID::groq), QStringLiteral("Groq"));
    EXPECT_EQ(displayName(ProviderID::ollama), QStringLiteral("Local (Ollama)"));
    EXPECT_EQ(displayName(ProviderID::openai), QStringLiteral("OpenAI"));
    EXPECT_EQ(displayName(ProviderID::zen), QStringLiteral("OpenCode Zen"));
    EXPECT_EQ(displayName(ProviderID::custom), QStringLiteral("Custom"));
}

TEST(ProviderIDTest, HasADefaultModelForAllButCustom)
{
    EXPECT_EQ(defaultModel(ProviderID::gemini), QStringLiteral("gemini-3.6-flash"));
    EXPECT_EQ(defaultModel(ProviderID::openrouter), QStringLiteral("deepseek/deepseek-chat-v3-0324"));
    EXPECT_EQ(defaultModel(ProviderID::groq), QStringLiteral("llama-3.3-70b-versatile"));
    EXPECT_EQ(defaultModel(ProviderID::ollama), QStringLiteral("qwen2.5"));
    EXPECT_EQ(defaultModel(ProviderID::openai), QStringLiteral("gpt-5-mini"));
    EXPECT_EQ(defaultModel(ProviderID::zen), QStringLiteral("deepseek-v4-flash-free"));
    EXPECT_EQ(defaultModel(ProviderID::custom), QString());
}

} // namespace
} // namespace morvane
