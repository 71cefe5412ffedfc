#include "net/TransportError.h"
#include "support/AppFixture.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace morvane {
namespace {

using Occasion = LocalModelFlow::Occasion;

const auto opening = u"Setting up the local model. This is a one-time download of a few gigabytes."_s;

/// What begins by itself: when the program starts, when the local model is chosen, when a newcomer is
/// greeted.
class LocalModelStartTest : public AppFixture {
protected:
    LocalModelStartTest()
    {
        settings->setProviderID(ProviderID::ollama);
        settings->setModel(u"qwen2.5"_s);
    }

    void begin(Occasion occasion)
    {
        model->localModel().refreshThenInstall(occasion);
        settle();
    }
    bool isInstalling() const { return model->localModel().info().installing; }
};

TEST_F(LocalModelStartTest, WhatIsMissingIsInstalledWhenTheProgramStarts)
{
    localModel.installationTime = 1h;
    begin(Occasion::programStart);
    EXPECT_TRUE(isInstalling());
}

TEST_F(LocalModelStartTest, WithAnotherProviderAStartInstallsNothing)
{
    settings->setProviderID(ProviderID::groq);
    begin(Occasion::programStart);
    begin(Occasion::providerChosen);
    EXPECT_EQ(localModel.installations, 0);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(LocalModelStartTest, ANewcomerGetsTheModelWhateverIsChosen)
{
    settings->setProviderID(ProviderID::groq);
    localModel.installationTime = 1h;
    begin(Occasion::onboarding);
    EXPECT_TRUE(isInstalling());
    EXPECT_THAT(announcer.spoken, ElementsAre(opening));
}

TEST_F(LocalModelStartTest, WhatIsThereIsNotInstalled)
{
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    service.willTurn(FakeAIService::Turn{}); // the request that loads the model
    begin(Occasion::onboarding);
    EXPECT_TRUE(model->localModel().info().running);
    EXPECT_EQ(localModel.installations, 0);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(LocalModelStartTest, AStartWithoutANetworkIsToldInOneSentence)
{
    localModel.failure = u"No network."_s;
    begin(Occasion::programStart);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Local model setup failed. No network."_s));
    EXPECT_EQ(activityTexts(), QStringList({opening, u"Local model setup failed: No network."_s}));
}

TEST_F(LocalModelStartTest, AStartThatDownloadsIsAnnouncedOnceWhenSomethingComes)
{
    localModel.installationTime = 1h;
    begin(Occasion::programStart);
    EXPECT_THAT(announcer.spoken, Not(Contains(opening)));
    localModel.progress(u"Downloading Ollama… 1 MB of 100 MB (1%)"_s, 0.01);
    localModel.progress(u"Downloading Ollama… 2 MB of 100 MB (2%)"_s, 0.02);
    EXPECT_THAT(announcer.spoken, ElementsAre(opening));
}

TEST_F(LocalModelStartTest, WhoeverHasChosenTheLocalModelHearsAtOnceThatItIsSetUp)
{
    localModel.installationTime = 1h;
    begin(Occasion::providerChosen);
    EXPECT_THAT(announcer.spoken, ElementsAre(opening));
}

TEST_F(LocalModelStartTest, SeveralReasonsToInstallAreOneInstallation)
{
    localModel.installationTime = 1h;
    model->localModel().refreshThenInstall(Occasion::onboarding);
    begin(Occasion::programStart);
    EXPECT_EQ(localModel.installations, 1);
    EXPECT_THAT(announcer.spoken, ElementsAre(opening));
}

TEST_F(LocalModelStartTest, InstallingTwiceInARowStartsOneInstallation)
{
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    model->localModel().installLocalModelIfNeeded();
    settle();
    model->localModel().installLocalModelIfNeeded();
    settle();
    EXPECT_EQ(localModel.installations, 1);
    EXPECT_THAT(announcer.spoken, ElementsAre(opening));
}

TEST_F(LocalModelStartTest, WhatIsCancelledBeforeItsBeginningDoesNotBegin)
{
    model->localModel().refreshThenInstall(Occasion::onboarding);
    model->cancelLocalModelWork();
    settle();
    EXPECT_EQ(localModel.installations, 0);
}

TEST_F(LocalModelStartTest, AServerThatHasEndedIsStartedAgainForTheNextMessage)
{
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    service.willTurn({}); // the request that loads the model
    model->localModel().refreshLocalModel();
    settle();
    localModel.serverRunning = false;
    service.willTurn(FakeAIService::failure(
        std::make_exception_ptr(TransportError(TransportError::Kind::cannotConnectToHost))));
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    finishRun();
    ASSERT_TRUE(lastMessage().errorMessage.has_value());
    settle();
    EXPECT_FALSE(model->localModel().info().running);
    service.willTurn({});
    service.willTurn(FakeAIService::answer(u"Hi."_s));
    ASSERT_TRUE(model->send(u"hello again"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == "Hi."_L1; }));
    EXPECT_EQ(localModel.installations, 1);
    EXPECT_TRUE(localModel.pulled.isEmpty());
}

TEST_F(LocalModelStartTest, AProviderChosenBeforeTheStateIsKnownIsLeftAlone)
{
    model->localModel().refreshThenInstall(Occasion::programStart);
    settings->setProviderID(ProviderID::groq);
    settle();
    EXPECT_EQ(localModel.installations, 0);
}

TEST_F(LocalModelStartTest, AMessageThatIsRefusedDuringTheSetupIsNotQueued)
{
    localModel.installationTime = 1min;
    ASSERT_TRUE(model->send(u"first"_s, {}));
    settle();
    EXPECT_FALSE(model->send(u"second"_s, {}));
    service.willTurn(FakeAIService::Turn{}); // the request that loads the model
    service.willTurn(FakeAIService::answer(u"Hi."_s));
    clock.advance(1min);
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == "Hi."_L1; }));
    finishRun();
    EXPECT_EQ(model->messages().size(), 2);
    ASSERT_EQ(contextEntries<APIMessage::User>().size(), 1);
    EXPECT_EQ(contextEntries<APIMessage::User>().constFirst().text, u"first"_s);
}

} // namespace
} // namespace morvane
