#include "store/SettingsStore.h"

#include "store/DefaultSystemPrompt.h"
#include "support/FakeKeychain.h"
#include "support/FileSizeLimit.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"

#include <QSettings>
#include <QStringList>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

namespace morvane {
namespace {

const auto service = QStringLiteral("com.morvaneapp.mac");

class SettingsStoreTest : public testing::Test {
protected:
    SettingsStore &open()
    {
        m_store.reset();
        m_store = std::make_unique<SettingsStore>(path, keychain);
        QObject::connect(m_store.get(), &SettingsStore::changed, m_store.get(), [this] { ++changes; });
        return *m_store;
    }
    void close() { m_store.reset(); }

    void put(const QVariantMap &values)
    {
        UserDefaults defaults(path);
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            defaults.set(value.key(), *value);
        ASSERT_TRUE(defaults.write());
    }
    QVariant stored(const QString &key) const { return UserDefaults(path).value(key); }
    bool isStored(const QString &key) const { return UserDefaults(path).contains(key); }

    TemporaryHome home;
    const QString path = home.path("Morvane/Morvane.conf");
    FakeKeychain keychain;
    int changes = 0;

private:
    std::unique_ptr<SettingsStore> m_store;
};

TEST_F(SettingsStoreTest, FirstStartHasTheDefaults)
{
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.providerID(), ProviderID::ollama);
    EXPECT_EQ(settings.model(), QStringLiteral("qwen2.5"));
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
    EXPECT_EQ(settings.model(), QStringLiteral("my, model \"x\""));
    EXPECT_EQ(settings.customBaseURL(), QStringLiteral("http://localhost:1234/v1"));
    EXPECT_EQ(settings.systemPrompt(), QStringLiteral("Zeile 1\nZeile 2 🙂, @x; y=z\n"));
    EXPECT_EQ(settings.temperature(), 0.0);
    EXPECT_EQ(settings.maxSteps(), 100);
    EXPECT_TRUE(settings.unlimitedSteps());
    EXPECT_FALSE(settings.announceResponses());
    EXPECT_FALSE(settings.useTools());
    EXPECT_EQ(settings.alwaysAllowedTools(), (QSet<QString>{"write_file", "mcp_a_b"}));
    EXPECT_EQ(settings.apiKey(), QStringLiteral("sk-1"));
}

TEST_F(SettingsStoreTest, FileIsOneThatQSettingsReads)
{
    SettingsStore &settings = open();
    settings.setModel("a, b");
    settings.setAlwaysAllowedTools({"write_file"});
    settings.setTemperature(0.25);
    const QSettings file(path, QSettings::IniFormat);
    EXPECT_EQ(file.status(), QSettings::NoError);
    EXPECT_EQ(file.value("model").toString(), QStringLiteral("a, b"));
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
    EXPECT_EQ(seen, QStringLiteral("x/x"));
}

TEST_F(SettingsStoreTest, UnknownProviderIsTheLocalOneAndTheModelFollows)
{
    put({{"provider", "anthropic"}});
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.providerID(), ProviderID::ollama);
    EXPECT_EQ(settings.model(), QStringLiteral("qwen2.5"));
}

TEST_F(SettingsStoreTest, ModelDefaultsToThatOfTheStoredProvider)
{
    put({{"provider", "groq"}});
    EXPECT_EQ(open().model(), QStringLiteral("llama-3.3-70b-versatile"));
}

TEST_F(SettingsStoreTest, EmptyStoredModelStaysEmpty)
{
    put({{"provider", "groq"}, {"model", ""}});
    EXPECT_EQ(open().model(), QString());
}

TEST_F(SettingsStoreTest, TooFewStepsAreRaisedWhenReadButNotRewritten)
{
    put({{"maxSteps", 3}});
    SettingsStore &settings = open();
    EXPECT_EQ(settings.maxSteps(), 8);
    EXPECT_EQ(stored("maxSteps").toInt(), 3);
    settings.setTemperature(0.1);
    EXPECT_EQ(stored("maxSteps").toInt(), 8);
}

TEST_F(SettingsStoreTest, StoredZeroAndFalseAreHonoured)
{
    put({{"temperature", 0.0}, {"announce", false}, {"useTools", false}, {"unlimitedSteps", false}});
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.temperature(), 0.0);
    EXPECT_FALSE(settings.announceResponses());
    EXPECT_FALSE(settings.useTools());
    EXPECT_FALSE(settings.unlimitedSteps());
}

TEST_F(SettingsStoreTest, ValuesThatAreNoNumbersGiveTheDefaults)
{
    for (const char *value : {"", "warm", "nan", "inf", "1e999"}) {
        put({{"temperature", value}, {"maxSteps", value}});
        const SettingsStore &settings = open();
        EXPECT_EQ(settings.temperature(), 0.7) << value;
        EXPECT_EQ(settings.maxSteps(), 25) << value;
        close();
    }
}

TEST_F(SettingsStoreTest, StepsBeyondAnIntegerAreCutToOne)
{
    put({{"maxSteps", "99999999999999999999"}});
    EXPECT_EQ(open().maxSteps(), std::numeric_limits<int>::max());
    close();
    put({{"maxSteps", "-99999999999999999999"}});
    EXPECT_EQ(open().maxSteps(), 8);
}

TEST_F(SettingsStoreTest, TextThatWasEditedByHandWithoutQuotesKeepsItsComma)
{
    home.write("Morvane/Morvane.conf",
               "[General]\nmodel=a, b\nsystemPromptVersion=7\nsystemPrompt=Be kind, be brief\n");
    const SettingsStore &settings = open();
    EXPECT_EQ(settings.model(), QStringLiteral("a, b"));
    EXPECT_EQ(settings.systemPrompt(), QStringLiteral("Be kind, be brief"));
}

TEST_F(SettingsStoreTest, OlderPromptVersionReplacesAnEditedPrompt)
{
    for (const int version : {0, 6}) {
        put({{"systemPromptVersion", version}, {"systemPrompt", "mine"}});
        EXPECT_EQ(open().systemPrompt(), defaultSystemPrompt());
        EXPECT_EQ(stored("systemPrompt"), QVariant(defaultSystemPrompt()));
        EXPECT_EQ(stored("systemPromptVersion").toInt(), 7);
        close();
    }
}

TEST_F(SettingsStoreTest, CurrentPromptVersionKeepsAnEditedPrompt)
{
    put({{"systemPromptVersion", 7}, {"systemPrompt", "mine"}});
    EXPECT_EQ(open().systemPrompt(), QStringLiteral("mine"));
}

TEST_F(SettingsStoreTest, NewerPromptVersionKeepsThePromptAndTheVersion)
{
    put({{"systemPromptVersion", 8}, {"systemPrompt", ""}});
    EXPECT_EQ(open().systemPrompt(), QString());
    EXPECT_EQ(stored("systemPromptVersion").toInt(), 8);
}

TEST_F(SettingsStoreTest, OldFreeModelOfOpenRouterMovesToThePaidName)
{
    put({{"provider", "openrouter"}, {"model", "deepseek/deepseek-chat-v3-0324:free"}});
    EXPECT_EQ(open().model(), QStringLiteral("deepseek/deepseek-chat-v3-0324"));
    EXPECT_EQ(stored("model"), QVariant("deepseek/deepseek-chat-v3-0324"));
    EXPECT_EQ(stored("modelDefaultsVersion").toInt(), 1);
    EXPECT_TRUE(isStored("temperature"));
}

TEST_F(SettingsStoreTest, OldFreeModelMovesOnlyOnce)
{
    put({{"provider", "openrouter"},
         {"model", "deepseek/deepseek-chat-v3-0324:free"},
         {"modelDefaultsVersion", 1}});
    EXPECT_EQ(open().model(), QStringLiteral("deepseek/deepseek-chat-v3-0324:free"));
}

TEST_F(SettingsStoreTest, OtherProvidersAndModelsDoNotMove)
{
    put({{"provider", "custom"}, {"model", "deepseek/deepseek-chat-v3-0324:free"}});
    EXPECT_EQ(open().model(), QStringLiteral("deepseek/deepseek-chat-v3-0324:free"));
    EXPECT_EQ(stored("modelDefaultsVersion").toInt(), 1);
    EXPECT_FALSE(isStored("temperature"));
}

TEST_F(SettingsStoreTest, KeysAreStoredTrimmedForTheCurrentProvider)
{
    SettingsStore &settings = open();
    settings.setProviderID(ProviderID::openai);
    settings.setApiKey("  sk-abc\n");
    EXPECT_EQ(settings.apiKey(), QStringLiteral("sk-abc"));
    EXPECT_EQ(stored("apiKey_openai"), QVariant("sk-abc"));
    settings.setProviderID(ProviderID::groq);
    EXPECT_EQ(settings.apiKey(), QString());
    settings.setProviderID(ProviderID::openai);
    EXPECT_EQ(settings.apiKey(), QStringLiteral("sk-abc"));
}

TEST_F(SettingsStoreTest, EmptyKeyIsStoredAsTheEmptyText)
{
    SettingsStore &settings = open();
    settings.setApiKey("x");
    settings.setApiKey(" \n");
    EXPECT_TRUE(isStored("apiKey_ollama"));
    EXPECT_EQ(stored("apiKey_ollama"), QVariant(""));
}

TEST_F(SettingsStoreTest, SettingAKeyStoresNothingElse)
{
    open().setApiKey("x");
    EXPECT_FALSE(isStored("temperature"));
    EXPECT_EQ(changes, 0);
}

TEST_F(SettingsStoreTest, CustomAddressIsTrimmedAndStoredTrimmed)
{
    SettingsStore &settings = open();
    settings.setCustomBaseURL("  https://x/v1 \n");
    EXPECT_EQ(settings.customBaseURL(), QStringLiteral("https://x/v1"));
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
    EXPECT_EQ(settings.value("currentConversationID").toString(), QStringLiteral("0A1B"));
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
    EXPECT_EQ(settings.model(), QStringLiteral("x"));
    EXPECT_EQ(stored("systemPromptVersion").toInt(), 7);
    settings.setTemperature(0.2);
    EXPECT_EQ(stored("model"), QVariant("x"));
}

TEST_F(SettingsStoreTest, KeychainKeysMoveIntoTheSettings)
{
    keychain.put("gemini", service, "key-1");
    keychain.put("zen", service, "key-2");
    keychain.put("groq", "another service", "not ours");
    SettingsStore &settings = open();
    ASSERT_TRUE(waitUntil([this] { return keychain.removals().size() == 2; }));
    EXPECT_EQ(stored("apiKey_gemini"), QVariant("key-1"));
    EXPECT_EQ(stored("apiKey_zen"), QVariant("key-2"));
    EXPECT_FALSE(isStored("apiKey_groq"));
    EXPECT_EQ(keychain.items().keys(), QStringList{"another service/groq"});
    EXPECT_EQ(changes, 1);
    settings.setProviderID(ProviderID::gemini);
    EXPECT_EQ(settings.apiKey(), QStringLiteral("key-1"));
}

TEST_F(SettingsStoreTest, KeychainIsAskedInOrderOnceAndNotByTheMainThread)
{
    open();
    ASSERT_TRUE(waitUntil([this] { return keychain.reads().size() == 7; }));
    close();
    QStringList expected;
    for (const ProviderID provider : allProviders)
        expected.append(service + u'/' + rawValue(provider));
    EXPECT_EQ(keychain.reads(), expected);
    EXPECT_FALSE(keychain.askedByMainThread());
}

TEST_F(SettingsStoreTest, KeychainItemOfAProviderWithAKeyIsNeverRead)
{
    put({{"apiKey_groq", "mine"}, {"apiKey_openai", ""}});
    keychain.put("groq", service, "old");
    keychain.put("openai", service, "old");
    open();
    ASSERT_TRUE(waitUntil([this] { return keychain.reads().size() == 5; }));
    close();
    EXPECT_FALSE(keychain.reads().contains(service + "/groq"));
    EXPECT_FALSE(keychain.reads().contains(service + "/openai"));
    EXPECT_EQ(keychain.items().size(), 2);
    EXPECT_EQ(stored("apiKey_groq"), QVariant("mine"));
    EXPECT_EQ(stored("apiKey_openai"), QVariant(""));
}

TEST_F(SettingsStoreTest, EmptyOrUnreadableKeychainItemsStayWhereTheyAre)
{
    keychain.put("gemini", service, "");
    keychain.put("groq", service, "\xff\xfe");
    open();
    ASSERT_TRUE(waitUntil([this] { return keychain.reads().size() == 7; }));
    settle();
    close();
    EXPECT_EQ(keychain.items().size(), 2);
    EXPECT_TRUE(keychain.removals().isEmpty());
    EXPECT_FALSE(isStored("apiKey_gemini"));
    EXPECT_FALSE(isStored("apiKey_groq"));
}

TEST_F(SettingsStoreTest, KeyTypedWhileTheKeychainIsAskedWins)
{
    keychain.held = true;
    keychain.put("ollama", service, "old");
    SettingsStore &settings = open();
    settings.setApiKey("typed");
    keychain.gate.release(7);
    ASSERT_TRUE(waitUntil([this] { return keychain.reads().size() == 7; }));
    settle();
    EXPECT_EQ(settings.apiKey(), QStringLiteral("typed"));
    close();
    EXPECT_EQ(keychain.items().size(), 1);
}

TEST_F(SettingsStoreTest, KeychainItemStaysUntilItsKeyIsStored)
{
    keychain.held = true;
    keychain.put("ollama", service, "old");
    SettingsStore &settings = open();
    {
        const FileSizeLimit full(10);
        keychain.gate.release(7);
        ASSERT_TRUE(waitUntil([&settings] { return settings.apiKey() == QStringLiteral("old"); }));
    }
    close();
    EXPECT_EQ(keychain.items().size(), 1);
}

TEST_F(SettingsStoreTest, EndingWhileTheKeychainIsAskedIsOrderly)
{
    keychain.put("ollama", service, "old");
    open();
    close();
    EXPECT_EQ(keychain.items().size(), 1);
    open();
    ASSERT_TRUE(waitUntil([this] { return keychain.removals().size() == 1; }));
    EXPECT_EQ(stored("apiKey_ollama"), QVariant("old"));
}

} // namespace
} // namespace morvane
