#include "LocalModelFixture.h"

#include "ui/settings/SettingsView.h"
#include "ui/window/LocalModelBanner.h"
#include "ui/window/LocalModelCard.h"
#include "ui/window/WelcomeView.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace morvane {
namespace {

const auto offer =
    u"No setup needed. Install the free local model that runs inside this app — no rate limits, "
    "and your data stays on your Mac."_s;
const auto cancelSetup = u"Cancel the local model setup"_s;

class LocalModelViewsTest : public LocalModelFixture {
protected:
    LocalModelViewsTest() { show(); }

    LocalModelCard *card() const { return part<LocalModelCard>(); }
    LocalModelBanner *banner() const { return part<LocalModelBanner>(); }
};

TEST_F(LocalModelViewsTest, TheWelcomeOffersTheModel)
{
    EXPECT_THAT(texts(card()), ElementsAre(offer));
    ASSERT_NE(button(card(), u"Connect a free AI provider"_s), nullptr);
    localModel.installationTime = 1h;
    button(card(), u"Install the built-in local model"_s)->click();
    settle();
    EXPECT_TRUE(model->localModel().info().installing);
    EXPECT_EQ(button(card(), u"Install the built-in local model"_s), nullptr);
}

TEST_F(LocalModelViewsTest, AnotherProviderIsConnectedInTheSettings)
{
    button(card(), u"Connect a free AI provider"_s)->click();
    const auto *opened = part<SettingsView>();
    ASSERT_NE(opened, nullptr);
    EXPECT_TRUE(opened->isVisible());
}

TEST_F(LocalModelViewsTest, WithoutAKeyTheWelcomeLeadsToTheSettings)
{
    const auto settingsButton = [this]() -> QAbstractButton * {
        for (auto *found : part<WelcomeView>()->findChildren<QAbstractButton *>())
            if (found->isVisible() && found->text() == "Morvane Settings"_L1)
                return found;
        return nullptr;
    };
    EXPECT_EQ(settingsButton(), nullptr);
    settings->setProviderID(ProviderID::groq);
    EXPECT_FALSE(card()->isVisible());
    ASSERT_NE(settingsButton(), nullptr);
    settingsButton()->click();
    EXPECT_NE(part<SettingsView>(), nullptr);
    settings->setApiKey(u"gsk-1"_s);
    EXPECT_EQ(settingsButton(), nullptr);
    EXPECT_FALSE(card()->isVisible());
}

TEST_F(LocalModelViewsTest, TheCardIsNoWiderThanItReadsWell)
{
    window->resize(1800, 900);
    settle();
    EXPECT_LE(card()->width(), 480);
    EXPECT_GT(card()->width(), 400);
}

TEST_F(LocalModelViewsTest, TheWelcomeShowsTheInstallation)
{
    localModel.installationTime = 1h;
    install();
    EXPECT_THAT(texts(card()), ElementsAre(u"Installing the local model…\nStarting Ollama…"_s));
    EXPECT_EQ(bar(card()), nullptr);
    report(u"Downloading Ollama… 70 MB of 1000 MB (7%)"_s, 0.07);
    EXPECT_THAT(texts(card()),
                ElementsAre(u"Installing the local model…\nDownloading Ollama… 70 MB of 1000 MB (7%)"_s));
    ASSERT_NE(bar(card()), nullptr);
    EXPECT_EQ(bar(card())->accessibleName(), u"Download progress 7%"_s);
}

TEST_F(LocalModelViewsTest, TheWelcomeShowsADownload)
{
    localModel.pullTime = 1h;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    EXPECT_THAT(texts(card()), ElementsAre(u"Downloading qwen3:4b\nDownloading model… 42%"_s));
    EXPECT_EQ(bar(card())->value(), 42);
}

TEST_F(LocalModelViewsTest, NoWordOfTheProgramHoweverLongWidensTheWindow)
{
    localModel.installationTime = 1h;
    install();
    window->resize(600, 600);
    report(QString(5'000, u'x'), 0.07);
    EXPECT_EQ(window->width(), 600);
    EXPECT_LE(card()->minimumSizeHint().width(), card()->width());
    EXPECT_LE(banner()->minimumSizeHint().width(), banner()->width());
}

TEST_F(LocalModelViewsTest, TheWelcomeTellsThatTheModelIsReady)
{
    haveModel();
    model->localModel().refreshLocalModel();
    settle();
    EXPECT_THAT(texts(card()), ElementsAre(u"Local model is ready — no limits, nothing leaves this Mac."_s));
    EXPECT_EQ(bar(card()), nullptr);
}

TEST_F(LocalModelViewsTest, TheWelcomeTellsWhatFailed)
{
    localModel.failure = u"No room."_s;
    install();
    EXPECT_THAT(texts(card()), ElementsAre(offer, u"Local model error: No room."_s));
    localModel.failure.clear();
    localModel.installationTime = 1h;
    install();
    EXPECT_THAT(texts(card()), ElementsAre(u"Installing the local model…\nStarting Ollama…"_s));
}

TEST_F(LocalModelViewsTest, TheCardIsForTheLocalModelOnly)
{
    settings->setProviderID(ProviderID::custom);
    EXPECT_FALSE(card()->isVisible());
    settings->setProviderID(ProviderID::ollama);
    EXPECT_TRUE(card()->isVisible());
}

TEST_F(LocalModelViewsTest, TheBannerStandsWhileTheModelIsSetUp)
{
    EXPECT_FALSE(banner()->isVisible());
    localModel.installationTime = 1h;
    install();
    ASSERT_TRUE(banner()->isVisible());
    EXPECT_THAT(texts(banner()), ElementsAre(u"Setting up the local model…\nStarting Ollama…"_s));
    EXPECT_EQ(bar(banner())->accessibleName(), u"Download progress"_s);
    report(u"Downloading Ollama… 70 MB of 1000 MB (7%)"_s, 0.07);
    EXPECT_EQ(bar(banner())->accessibleName(), u"Download progress 7%"_s);
    report(u"Installing Ollama…"_s, std::nullopt);
    EXPECT_EQ(bar(banner())->accessibleName(), u"Download progress"_s);
    EXPECT_EQ(button(banner(), cancelSetup)->focusPolicy() & Qt::TabFocus, Qt::TabFocus);
    button(banner(), cancelSetup)->click();
    settle();
    EXPECT_FALSE(banner()->isVisible());
    EXPECT_FALSE(model->localModel().info().installing);
}

TEST_F(LocalModelViewsTest, TheBannerIsTheWayOutOfADownloadToo)
{
    localModel.pullTime = 1h;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    ASSERT_TRUE(banner()->isVisible());
    button(banner(), cancelSetup)->click();
    settle();
    EXPECT_EQ(model->localModel().pullingModel(), QString());
    EXPECT_FALSE(banner()->isVisible());
}

TEST_F(LocalModelViewsTest, AMessageThatWaitsIsLetGoByTheBanner)
{
    localModel.installationTime = 1h;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    button(banner(), cancelSetup)->click();
    settle();
    EXPECT_FALSE(model->isInstallPending());
    EXPECT_EQ(lastMessage().errorMessage,
              u"Switched to another provider before the local model finished downloading."_s);
}

} // namespace
} // namespace morvane
