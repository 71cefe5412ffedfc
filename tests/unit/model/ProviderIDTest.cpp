#include "model/ProviderID.h"

#include <QStringList>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

TEST(ProviderIDTest, ProvidersAreOfferedInTheirOrder)
{
    QStringList values;
    for (const ProviderID provider : allProviders)
        values.append(rawValue(provider));
    EXPECT_EQ(values.join(u' '), u"gemini openrouter groq ollama openai zen custom"_s);
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
    EXPECT_EQ(displayName(ProviderID::gemini), u"Google Gemini"_s);
    EXPECT_EQ(displayName(ProviderID::openrouter), u"OpenRouter"_s);
    EXPECT_EQ(displayName(ProviderID::groq), u"Groq"_s);
    EXPECT_EQ(displayName(ProviderID::ollama), u"Local (Ollama)"_s);
    EXPECT_EQ(displayName(ProviderID::openai), u"OpenAI"_s);
    EXPECT_EQ(displayName(ProviderID::zen), u"OpenCode Zen"_s);
    EXPECT_EQ(displayName(ProviderID::custom), u"Custom"_s);
}

TEST(ProviderIDTest, HasADefaultModelForAllButCustom)
{
    EXPECT_EQ(defaultModel(ProviderID::gemini), u"gemini-3.6-flash"_s);
    EXPECT_EQ(defaultModel(ProviderID::openrouter), u"deepseek/deepseek-chat-v3-0324"_s);
    EXPECT_EQ(defaultModel(ProviderID::groq), u"llama-3.3-70b-versatile"_s);
    EXPECT_EQ(defaultModel(ProviderID::ollama), u"qwen2.5"_s);
    EXPECT_EQ(defaultModel(ProviderID::openai), u"gpt-5-mini"_s);
    EXPECT_EQ(defaultModel(ProviderID::zen), u"deepseek-v4-flash-free"_s);
    EXPECT_EQ(defaultModel(ProviderID::custom), QString());
}

} // namespace
} // namespace morvane
