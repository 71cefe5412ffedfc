#include "SettingsStoreFixture.h"

#include "support/FileSizeLimit.h"
#include "support/RunTask.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

const auto service = u"com.morvaneapp.mac"_s;

/// The way of old keys out of the keychain.
class SettingsKeychainTest : public SettingsStoreFixture {};

TEST_F(SettingsKeychainTest, KeychainKeysMoveIntoTheSettings)
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
    EXPECT_EQ(settings.apiKey(), u"key-1"_s);
}

TEST_F(SettingsKeychainTest, KeychainIsAskedInOrderOnceAndNotByTheMainThread)
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

TEST_F(SettingsKeychainTest, KeychainItemOfAProviderWithAKeyIsNeverRead)
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

TEST_F(SettingsKeychainTest, EmptyOrUnreadableKeychainItemsStayWhereTheyAre)
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

TEST_F(SettingsKeychainTest, KeyTypedWhileTheKeychainIsAskedWins)
{
    keychain.held = true;
    keychain.put("ollama", service, "old");
    SettingsStore &settings = open();
    settings.setApiKey("typed");
    keychain.gate.release(7);
    ASSERT_TRUE(waitUntil([this] { return keychain.reads().size() == 7; }));
    settle();
    EXPECT_EQ(settings.apiKey(), u"typed"_s);
    close();
    EXPECT_EQ(keychain.items().size(), 1);
}

TEST_F(SettingsKeychainTest, KeychainItemStaysUntilItsKeyIsStored)
{
    keychain.held = true;
    keychain.put("ollama", service, "old");
    SettingsStore &settings = open();
    {
        const FileSizeLimit full(10);
        keychain.gate.release(7);
        ASSERT_TRUE(waitUntil([&settings] { return settings.apiKey() == u"old"_s; }));
    }
    close();
    EXPECT_EQ(keychain.items().size(), 1);
}

TEST_F(SettingsKeychainTest, EndingWhileTheKeychainIsAskedIsOrderly)
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
