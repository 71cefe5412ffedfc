#include "SettingsStoreFixture.h"

#include "store/DefaultSystemPrompt.h"
#include "support/FileSizeLimit.h"

#include <QSettings>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// What is set, stored and announced.
class SettingsStoreTest : public SettingsStoreFixture {};

TEST_F(SettingsStoreTest, FirstStartHasTheDefaults)
{
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.providerID(), ProviderID::ollama);
    EXPECT_EQ(settings.model(), u"qwen2.5"_s);
    EXPECT_EQ(settings.customBaseURL(), QString());
    EXPECT_EQ(settings.systemPrompt(), defaultSystemPrompt());
    EXPECT_EQ(settings.temperature(), 0.7);
    EXPECT_EQ(settings.maxSteps(), 25);
    EXPECT_FALSE(settings.unlimitedSteps());
    EXPECT_TRUE(settings.announceResponses());
    EXPECT_TRUE(settings.useTools());
    EXPECT_TRUE(settings.alwaysAllowedTools().isEmpty());
    EXPECT_EQ(settings.apiKey(), QString());
    EXPECT_EQ(stored("systemPromptVersion").toInt(), 7);
    EXPECT_EQ(stored("modelDefaultsVersion").toInt(), 1);
    EXPECT_EQ(stored("systemPrompt"), QVariant(defaultSystemPrompt()));
}

TEST_F(SettingsStoreTest, FirstStartStoresNoPropertyButThePrompt)
{
    open();
    for (const char *key : {"provider", "model", "customBaseURL", "temperature", "maxSteps", "unlimitedSteps",
                            "announce", "useTools", "alwaysAllowedTools", "apiKey_ollama"})
        EXPECT_FALSE(isStored(key)) << key;
}

TEST_F(SettingsStoreTest, EveryPropertySurvivesARestart)
{
    {
        SettingsStore &settings = open();
        settings.setProviderID(ProviderID::custom);
        settings.setModel("my, model \"x\"");
        settings.setCustomBaseURL("http://localhost:1234/v1");
        settings.setSystemPrompt("Zeile 1\nZeile 2 🙂, @x; y=z\n");
        settings.setTemperature(0.0);
        settings.setMaxSteps(100);
        settings.setUnlimitedSteps(true);
        settings.setAnnounceResponses(false);
        settings.setUseTools(false);
        settings.setAlwaysAllowedTools({"write_file", "mcp_a_b"});
        settings.setApiKey("sk-1");
    }
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.providerID(), ProviderID::custom);
    EXPECT_EQ(settings.model(), u"my, model \"x\""_s);
    EXPECT_EQ(settings.customBaseURL(), u"http://localhost:1234/v1"_s);
    EXPECT_EQ(settings.systemPrompt(), u"Zeile 1\nZeile 2 🙂, @x; y=z\n"_s);
    EXPECT_EQ(settings.temperature(), 0.0);
    EXPECT_EQ(settings.maxSteps(), 100);
    EXPECT_TRUE(settings.unlimitedSteps());
    EXPECT_FALSE(settings.announceResponses());
    EXPECT_FALSE(settings.useTools());
    EXPECT_EQ(settings.alwaysAllowedTools(), (QSet<QString>{"write_file", "mcp_a_b"}));
    EXPECT_EQ(settings.apiKey(), u"sk-1"_s);
}

TEST_F(SettingsStoreTest, FileIsOneThatQSettingsReads)
{
    SettingsStore &settings = open();
    settings.setModel("a, b");
    settings.setAlwaysAllowedTools({"write_file"});
    settings.setTemperature(0.25);
    const QSettings file(path, QSettings::IniFormat);
    EXPECT_EQ(file.status(), QSettings::NoError);
    EXPECT_EQ(file.value("model").toString(), u"a, b"_s);
    EXPECT_EQ(file.value("temperature").toDouble(), 0.25);
    EXPECT_EQ(file.value("alwaysAllowedTools").toStringList(), QStringList{"write_file"});
    EXPECT_TRUE(file.childGroups().isEmpty());
}

TEST_F(SettingsStoreTest, AChangeStoresAllTenProperties)
{
    open().setTemperature(0.5);
    for (const char *key : {"provider", "model", "customBaseURL", "systemPrompt", "temperature", "maxSteps",
                            "unlimitedSteps", "announce", "useTools", "alwaysAllowedTools"})
        EXPECT_TRUE(isStored(key)) << key;
}

TEST_F(SettingsStoreTest, EveryChangeIsOnFileBeforeTheSetterReturns)
{
    SettingsStore &settings = open();
    settings.setModel("one");
    EXPECT_EQ(stored("model"), QVariant("one"));
    settings.setUseTools(false);
    EXPECT_EQ(stored("useTools"), QVariant("false"));
}

TEST_F(SettingsStoreTest, ChangesAreAnnouncedOnce)
{
    SettingsStore &settings = open();
    int providers = 0;
    QObject::connect(&settings, &SettingsStore::providerIDChanged, &settings, [&providers] { ++providers; });
    settings.setProviderID(ProviderID::groq);
    settings.setProviderID(ProviderID::groq);
    settings.setModel("x");
    settings.setModel("x");
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(providers, 1);
}

TEST_F(SettingsStoreTest, AnnouncedChangeIsAlreadyInForceAndStored)
{
    SettingsStore &settings = open();
    QString seen;
    QObject::connect(&settings, &SettingsStore::changed, &settings,
                     [&] { seen = settings.model() + u'/' + stored("model").toString(); });
    settings.setModel("x");
    EXPECT_EQ(seen, u"x/x"_s);
}

TEST_F(SettingsStoreTest, KeysAreStoredTrimmedForTheCurrentProvider)
{
    SettingsStore &settings = open();
    settings.setProviderID(ProviderID::openai);
    settings.setApiKey("  sk-abc\n");
    EXPECT_EQ(settings.apiKey(), u"sk-abc"_s);
    EXPECT_EQ(stored("apiKey_openai"), QVariant("sk-abc"));
    settings.setProviderID(ProviderID::groq);
    EXPECT_EQ(settings.apiKey(), QString());
    settings.setProviderID(ProviderID::openai);
    EXPECT_EQ(settings.apiKey(), u"sk-abc"_s);
}

TEST_F(SettingsStoreTest, EmptyKeyIsStoredAsTheEmptyText)
{
    SettingsStore &settings = open();
    settings.setApiKey("x");
    settings.setApiKey(" \n");
    EXPECT_TRUE(isStored("apiKey_ollama"));
    EXPECT_EQ(stored("apiKey_ollama"), QVariant(""));
}

TEST_F(SettingsStoreTest, SettingAKeyStoresNothingElseAndIsAnnouncedOnce)
{
    SettingsStore &settings = open();
    settings.setApiKey("x");
    EXPECT_FALSE(isStored("temperature"));
    EXPECT_EQ(changes, 1);
    settings.setApiKey("x\n");
    EXPECT_EQ(changes, 1);
}

TEST_F(SettingsStoreTest, AnnouncedKeyIsAlreadyInForceAndStored)
{
    SettingsStore &settings = open();
    QString seen;
    QObject::connect(&settings, &SettingsStore::changed, &settings,
                     [&] { seen = settings.apiKey() + u'/' + stored("apiKey_ollama").toString(); });
    settings.setApiKey("x");
    EXPECT_EQ(seen, u"x/x"_s);
}

TEST_F(SettingsStoreTest, CustomAddressIsTrimmedAndStoredTrimmed)
{
    SettingsStore &settings = open();
    settings.setCustomBaseURL("  https://x/v1 \n");
    EXPECT_EQ(settings.customBaseURL(), u"https://x/v1"_s);
    EXPECT_EQ(stored("customBaseURL"), QVariant("https://x/v1"));
    EXPECT_EQ(changes, 1);
}

TEST_F(SettingsStoreTest, OtherPartsKeepTheirKeysHere)
{
    {
        SettingsStore &settings = open();
        settings.setValue("currentConversationID", "0A1B");
        settings.setValue("hasCompletedOnboarding", true);
        settings.setValue("pendingReminders", QByteArray("[{\"a\":1}]"));
        settings.setValue("dismissedUpdateVersion", "1.2|3");
        settings.removeValue("dismissedUpdateVersion");
        EXPECT_EQ(changes, 0);
    }
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.value("currentConversationID").toString(), u"0A1B"_s);
    EXPECT_TRUE(settings.value("hasCompletedOnboarding").toBool());
    EXPECT_EQ(settings.value("pendingReminders").toByteArray(), QByteArray("[{\"a\":1}]"));
    EXPECT_FALSE(settings.value("dismissedUpdateVersion").isValid());
}

TEST_F(SettingsStoreTest, UnknownKeysOfTheFileStay)
{
    home.write("Morvane/Morvane.conf", "[General]\nfuture=1\n\n[window]\nwidth=800\n");
    open().setModel("x");
    EXPECT_EQ(stored("future"), QVariant("1"));
    EXPECT_EQ(stored("window/width"), QVariant("800"));
}

TEST_F(SettingsStoreTest, FullDiskLeavesTheProgramWithItsSettings)
{
    SettingsStore &settings = open();
    {
        const FileSizeLimit full(10);
        settings.setModel("x");
    }
    EXPECT_EQ(settings.model(), u"x"_s);
    EXPECT_EQ(stored("systemPromptVersion").toInt(), 7);
    settings.setTemperature(0.2);
    EXPECT_EQ(stored("model"), QVariant("x"));
}

} // namespace
} // namespace morvane
