#include "support/AppFixture.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace morvane {
namespace {

using Service = FakeAIService;

class LocalModelFlowTest : public AppFixture {
protected:
    LocalModelFlowTest()
    {
        settings->setProviderID(ProviderID::ollama);
        settings->setModel(u"qwen2.5"_s);
    }
};

TEST_F(LocalModelFlowTest, MessageWaitsForTheInstallationAndGetsItsAnswer)
{
    localModel.installationTime = 1min;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    EXPECT_TRUE(model->isInstallPending());
    EXPECT_EQ(model->status().statusText(), u"Setting up local model…"_s);
    EXPECT_EQ(
        activityTexts(),
        QStringList({u"Setting up the local model before sending."_s,
                     u"Setting up the local model. This is a one-time download of a few gigabytes."_s}));
    EXPECT_THAT(
        announcer.spoken,
        Contains(u"Setting up the local model first. This is a one-time download of a few gigabytes and "
                 "will be ready automatically."_s));
    EXPECT_FALSE(model->send(u"second"_s, {}));
    EXPECT_EQ(model->messages().size(), 2);
    service.willTurn(Service::Turn{}); // the request that loads the model
    service.willTurn(Service::answer(u"Hi."_s));
    clock.advance(1min);
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == "Hi."_L1; }));
    finishRun();
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_THAT(announcer.spoken, Contains(u"The local model is ready. You can start chatting."_s));
}

TEST_F(LocalModelFlowTest, ARunOfTheLocalModelSaysSo)
{
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    service.willTurn(FakeAIService::Turn{}); // the request that loads the model
    model->localModel().refreshLocalModel();
    settle();
    neverAnswer();
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    EXPECT_EQ(model->status().statusText(), u"Local model is working…"_s);
}

TEST_F(LocalModelFlowTest, MessageSentDuringAnInstallationWaitsForIt)
{
    localModel.installationTime = 1min;
    model->localModel().installLocalModelIfNeeded();
    model->localModel().installLocalModelIfNeeded();
    settle();
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    EXPECT_EQ(model->status().statusText(), u"Waiting for the local model setup to finish…"_s);
    EXPECT_THAT(announcer.spoken, Contains(u"Waiting for the local model setup before sending."_s));
    service.willTurn(Service::Turn{}); // the request that loads the model
    service.willTurn(Service::answer(u"Hi."_s));
    clock.advance(1min);
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == "Hi."_L1; }));
    EXPECT_EQ(localModel.installations, 1);
}

TEST_F(LocalModelFlowTest, MessageSentWhileTheModelIsFoundReadyGetsItsAnswer)
{
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    model->localModel().refreshLocalModel();
    service.willTurn(Service::answer(u"hi"_s)); // to the warming up
    service.willTurn(Service::answer(u"hi"_s));
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    ASSERT_TRUE(model->isInstallPending());
    finishRun();
    EXPECT_FALSE(model->isInstallPending());
    EXPECT_EQ(lastMessage().text, u"hi"_s);
    EXPECT_EQ(localModel.installations, 0);
}

TEST_F(LocalModelFlowTest, FailedInstallationShowsItsErrorInTheWaitingRow)
{
    localModel.failure = u"No room."_s;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return lastMessage().errorMessage.has_value(); }));
    settle();
    EXPECT_EQ(lastMessage().errorMessage, u"No room."_s);
    EXPECT_EQ(model->status().statusText(), u"Local model not ready"_s);
    EXPECT_EQ(model->localModel().info().error, u"No room."_s);
    EXPECT_THAT(activityTexts(), Contains(u"Local model setup failed: No room."_s));
    EXPECT_THAT(notifications.notified,
                ElementsAre(std::pair(u"No room."_s, NotificationPort::Outcome::error)));
}

TEST_F(LocalModelFlowTest, WaitingIsAnnouncedOnlyWhereResponsesAre)
{
    settings->setAnnounceResponses(false);
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    EXPECT_THAT(announcer.spoken, Not(Contains(u"Waiting for the local model setup before sending."_s)));
    EXPECT_EQ(model->status().statusText(), u"Waiting for the local model setup to finish…"_s);
}

TEST_F(LocalModelFlowTest, ACancelledAttemptForgetsTheFailureBeforeIt)
{
    localModel.failure = u"No room."_s;
    model->localModel().installLocalModelIfNeeded();
    settle();
    localModel.failure.clear();
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    model->cancelLocalModelWork();
    settle();
    EXPECT_EQ(model->localModel().info().error, QString());
}

TEST_F(LocalModelFlowTest, StopEndsTheInstallationToo)
{
    localModel.installationTime = 1h;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    model->cancel();
    settle();
    EXPECT_FALSE(model->isInstallPending());
    EXPECT_FALSE(model->localModel().info().installing);
    EXPECT_THAT(activityTexts(), Contains(u"Local model setup was cancelled."_s));
}

TEST_F(LocalModelFlowTest, ANewConversationEndsTheInstallationAndTheWaitingMessage)
{
    localModel.installationTime = 1h;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    ASSERT_TRUE(model->localModel().info().installing);
    model->newConversation();
    settle();
    EXPECT_FALSE(model->isInstallPending());
    EXPECT_FALSE(model->localModel().info().installing);
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(listed().size(), 1);
}

TEST_F(LocalModelFlowTest, ANewConversationEndsAnInstallationThatNoMessageStarted)
{
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    model->newConversation();
    settle();
    EXPECT_FALSE(model->localModel().info().installing);
}

TEST_F(LocalModelFlowTest, OpeningIsRefusedWhileAMessageWaits)
{
    localModel.installationTime = 1h;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    const auto id = model->currentConversationID();
    model->openConversation(QUuid::createUuid());
    settle();
    EXPECT_EQ(model->currentConversationID(), id);
    EXPECT_TRUE(model->isInstallPending());
}

TEST_F(LocalModelFlowTest, SwitchingTheProviderEndsAWaitingMessage)
{
    localModel.installationTime = 1h;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    settings->setProviderID(ProviderID::groq);
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    settle();
    EXPECT_FALSE(model->localModel().info().installing);
    EXPECT_FALSE(model->localModel().isWorking());
    EXPECT_EQ(lastMessage().errorMessage,
              u"Switched to another provider before the local model finished downloading."_s);
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_FALSE(model->isInstallPending());
}

TEST_F(LocalModelFlowTest, SwitchingTheProviderSavesTheWaitingMessage)
{
    localModel.installationTime = 1h;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    settings->setProviderID(ProviderID::groq);
    settle();
    ASSERT_EQ(listed().size(), 1);
    EXPECT_EQ(listed().first().messageCount, 2);
}

TEST_F(LocalModelFlowTest, SwitchingTheProviderWithoutAWaitingMessageAddsNothing)
{
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    settings->setProviderID(ProviderID::groq);
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_FALSE(model->localModel().info().installing);
}

TEST_F(LocalModelFlowTest, AnInstallationTellsEachStepAndItsEnd)
{
    model->localModel().installLocalModelIfNeeded();
    EXPECT_TRUE(model->localModel().info().installing);
    service.willTurn(Service::Turn{}); // the request that loads the model
    settle();
    EXPECT_EQ(localModel.spaceAskedFor,
              (QList<std::pair<qint64, QString>>{{6'000'000'000, u"install the qwen2.5 model"_s}}));
    EXPECT_EQ(localModel.pulled, QStringList(u"qwen2.5"_s));
    EXPECT_EQ(activityTexts(),
              QStringList({u"Setting up the local model. This is a one-time download of a few gigabytes."_s,
                           u"The local model is ready. No limits, everything stays on this Mac."_s}));
    const LocalModelInfo &info = model->localModel().info();
    EXPECT_TRUE(info.running);
    EXPECT_FALSE(info.installing);
    EXPECT_FALSE(info.progressFraction);
    EXPECT_EQ(info.progress, u"The qwen2.5 model is ready."_s);
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    EXPECT_EQ(model->localModel().installedModels(), QStringList(u"qwen2.5"_s));
    EXPECT_EQ(service.requests().size(), 1);
}

TEST_F(LocalModelFlowTest, TooLittleSpaceForTheModelIsToldBeforeItsDownload)
{
    localModel.spaceFailure = u"No room for a model."_s;
    model->localModel().installLocalModelIfNeeded();
    settle();
    EXPECT_TRUE(localModel.pulled.isEmpty());
    EXPECT_EQ(model->localModel().info().progress, u"Local model setup failed. No room for a model."_s);
    EXPECT_THAT(announcer.spoken, Contains(u"Local model setup failed. No room for a model."_s));
}

TEST_F(LocalModelFlowTest, AModelThatIsThereIsNotDownloadedAgain)
{
    settings->setModel(u"qwen3:4b:latest"_s);
    localModel.models = {u"qwen3:4b"_s};
    service.willTurn(Service::Turn{});
    model->localModel().installLocalModelIfNeeded();
    settle();
    EXPECT_TRUE(localModel.pulled.isEmpty());
    EXPECT_TRUE(model->localModel().info().running);
}

TEST_F(LocalModelFlowTest, AFailureIsForgottenByTheNextAttempt)
{
    localModel.failure = u"No room."_s;
    model->localModel().installLocalModelIfNeeded();
    settle();
    localModel.failure.clear();
    service.willTurn(Service::Turn{});
    model->localModel().installLocalModelIfNeeded();
    settle();
    EXPECT_TRUE(model->localModel().info().running);
    EXPECT_EQ(model->localModel().info().error, QString());
}

TEST_F(LocalModelFlowTest, WhatIsAskedForWhileACancelledInstallationEndsComesThen)
{
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    model->cancelLocalModelWork();
    EXPECT_FALSE(model->localModel().info().installing);
    EXPECT_FALSE(model->localModel().isWorking());
    localModel.installationTime = {};
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    EXPECT_TRUE(model->isInstallPending());
    EXPECT_TRUE(model->localModel().isWorking());
    service.willTurn(Service::Turn{}); // the request that loads the model
    service.willTurn(Service::answer(u"Hi."_s));
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == "Hi."_L1; }));
    EXPECT_EQ(localModel.installations, 2);
}

TEST_F(LocalModelFlowTest, TheEndOfACancelledInstallationIsNotTheStatusOfTheNext)
{
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    model->cancelLocalModelWork();
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    EXPECT_EQ(localModel.installations, 2);
    EXPECT_EQ(model->status().statusText(), u"Setting up local model…"_s);
}

TEST_F(LocalModelFlowTest, CancellingAgainTakesBackWhatWasToCome)
{
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    model->cancelLocalModelWork();
    model->localModel().installLocalModelIfNeeded();
    model->cancelLocalModelWork();
    settle();
    EXPECT_FALSE(model->localModel().isWorking());
    EXPECT_EQ(localModel.installations, 1);
}

TEST_F(LocalModelFlowTest, StopDoesNotEndAnInstallationThatTheMessageDidNotStart)
{
    localModel.installationTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    model->cancel();
    settle();
    EXPECT_FALSE(model->isInstallPending());
    EXPECT_TRUE(model->localModel().info().installing);
}

} // namespace
} // namespace morvane
