#include "SettingsStoreFixture.h"

#include "store/DefaultSystemPrompt.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What is made of a file of an older version, of another hand or of nobody's making.
class SettingsReadingTest : public SettingsStoreFixture {};

TEST_F(SettingsReadingTest, UnknownProviderIsTheLocalOneAndTheModelFollows)
{
    put({{"provider", "anthropic"}});
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.providerID(), ProviderID::ollama);
    EXPECT_EQ(settings.model(), u"qwen2.5"_s);
}

TEST_F(SettingsReadingTest, ModelDefaultsToThatOfTheStoredProvider)
{
    put({{"provider", "groq"}});
    EXPECT_EQ(open().model(), u"llama-3.3-70b-versatile"_s);
}

TEST_F(SettingsReadingTest, EmptyStoredModelStaysEmpty)
{
    put({{"provider", "groq"}, {"model", ""}});
    EXPECT_EQ(open().model(), QString());
}

TEST_F(SettingsReadingTest, TooFewStepsAreRaisedWhenReadButNotRewritten)
{
    put({{"maxSteps", 3}});
    SettingsStore &settings = open();
    EXPECT_EQ(settings.maxSteps(), 8);
    EXPECT_EQ(stored("maxSteps").toInt(), 3);
    settings.setTemperature(0.1);
    EXPECT_EQ(stored("maxSteps").toInt(), 8);
}

TEST_F(SettingsReadingTest, StoredZeroAndFalseAreHonoured)
{
    put({{"temperature", 0.0}, {"announce", false}, {"useTools", false}, {"unlimitedSteps", false}});
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.temperature(), 0.0);
    EXPECT_FALSE(settings.announceResponses());
    EXPECT_FALSE(settings.useTools());
    EXPECT_FALSE(settings.unlimitedSteps());
}

TEST_F(SettingsReadingTest, ValuesThatAreNoNumbersGiveTheDefaults)
{
    for (const char *value : {"", "warm", "nan", "inf", "1e999"}) {
        put({{"temperature", value}, {"maxSteps", value}});
        const SettingsStore &settings = open();
        EXPECT_EQ(settings.temperature(), 0.7) << value;
        EXPECT_EQ(settings.maxSteps(), 25) << value;
        close();
    }
}

TEST_F(SettingsReadingTest, StepsBeyondAnIntegerAreCutToOne)
{
    put({{"maxSteps", "99999999999999999999"}});
    EXPECT_EQ(open().maxSteps(), std::numeric_limits<int>::max());
    close();
    put({{"maxSteps", "-99999999999999999999"}});
    EXPECT_EQ(open().maxSteps(), 8);
}

TEST_F(SettingsReadingTest, TextThatWasEditedByHandWithoutQuotesKeepsItsComma)
{
    home.write("Morvane/Morvane.conf",
               "[General]\nmodel=a, b\nsystemPromptVersion=7\nsystemPrompt=Be kind, be brief\n");
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.model(), u"a, b"_s);
    EXPECT_EQ(settings.systemPrompt(), u"Be kind, be brief"_s);
}

TEST_F(SettingsReadingTest, OlderPromptVersionReplacesAnEditedPrompt)
{
    for (const int version : {0, 6}) {
        put({{"systemPromptVersion", version}, {"systemPrompt", "mine"}});
        EXPECT_EQ(open().systemPrompt(), defaultSystemPrompt());
        EXPECT_EQ(stored("systemPrompt"), QVariant(defaultSystemPrompt()));
        EXPECT_EQ(stored("systemPromptVersion").toInt(), 7);
        close();
    }
}

TEST_F(SettingsReadingTest, CurrentPromptVersionKeepsAnEditedPrompt)
{
    put({{"systemPromptVersion", 7}, {"systemPrompt", "mine"}});
    EXPECT_EQ(open().systemPrompt(), u"mine"_s);
}

TEST_F(SettingsReadingTest, NewerPromptVersionKeepsThePromptAndTheVersion)
{
    put({{"systemPromptVersion", 8}, {"systemPrompt", ""}});
    EXPECT_EQ(open().systemPrompt(), QString());
    EXPECT_EQ(stored("systemPromptVersion").toInt(), 8);
}

TEST_F(SettingsReadingTest, OldFreeModelOfOpenRouterMovesToThePaidName)
{
    put({{"provider", "openrouter"}, {"model", "deepseek/deepseek-chat-v3-0324:free"}});
    EXPECT_EQ(open().model(), u"deepseek/deepseek-chat-v3-0324"_s);
    EXPECT_EQ(stored("model"), QVariant("deepseek/deepseek-chat-v3-0324"));
    EXPECT_EQ(stored("modelDefaultsVersion").toInt(), 1);
    EXPECT_TRUE(isStored("temperature"));
}

TEST_F(SettingsReadingTest, OldFreeModelMovesOnlyOnce)
{
    put({{"provider", "openrouter"},
         {"model", "deepseek/deepseek-chat-v3-0324:free"},
         {"modelDefaultsVersion", 1}});
    EXPECT_EQ(open().model(), u"deepseek/deepseek-chat-v3-0324:free"_s);
}

TEST_F(SettingsReadingTest, OtherProvidersAndModelsDoNotMove)
{
    put({{"provider", "custom"}, {"model", "deepseek/deepseek-chat-v3-0324:free"}});
    EXPECT_EQ(open().model(), u"deepseek/deepseek-chat-v3-0324:free"_s);
    EXPECT_EQ(stored("modelDefaultsVersion").toInt(), 1);
    EXPECT_FALSE(isStored("temperature"));
}

} // namespace
} // namespace morvane
