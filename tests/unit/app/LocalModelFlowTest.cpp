#include "support/AppFixture.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;

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

    void refresh()
    {
        model->localModel().refreshLocalModel();
        settle();
    }
};

TEST_F(LocalModelFlowTest, TellsWhatIsMissing)
{
    refresh();
    EXPECT_EQ(model->localModel().info().progress, u"Ollama is not installed yet."_s);
    localModel.binaryInstalled = true;
    refresh();
    EXPECT_EQ(model->localModel().info().progress, u"Ollama is not running."_s);
    localModel.serverRunning = true;
    refresh();
    EXPECT_EQ(model->localModel().info().progress,
              u"Ollama is running, but the qwen2.5 model is not downloaded yet."_s);
    EXPECT_FALSE(model->localModel().info().running);
}

TEST_F(LocalModelFlowTest, ModelCountsAsInstalledWithAndWithoutLatest)
{
    localModel.serverRunning = true;
    for (const char *name : {"qwen2.5", "qwen2.5:latest"}) {
        localModel.models = {QString::fromLatin1(name)};
        service.willTurn(Service::Turn{});
        refresh();
        EXPECT_TRUE(model->localModel().info().running) << name;
    }
    EXPECT_EQ(model->localModel().info().progress, u"The qwen2.5 model is ready."_s);
}

TEST_F(LocalModelFlowTest, MessageWaitsForTheInstallationAndGetsItsAnswer)
{
    localModel.installationTime = 1min;
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    settle();
    EXPECT_TRUE(model->isInstallPending());
    EXPECT_EQ(model->status().statusText(), u"Setting up local model…"_s);
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
    settle();
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

TEST_F(LocalModelFlowTest, APulledModelBecomesTheChosenOne)
{
    localModel.pullTime = 1min;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(model->localModel().pullingModel(), u"qwen3:4b"_s);
    EXPECT_EQ(model->localModel().info().progress, u"Downloading model… 42%"_s);
    EXPECT_EQ(model->localModel().info().progressFraction, 0.42);
    model->localModel().pullLocalModelIfNeeded(u"llama3.1:8b"_s);
    model->localModel().installLocalModelIfNeeded();
    service.willTurn(Service::Turn{}); // the request that loads the model
    clock.advance(1min);
    settle();
    EXPECT_EQ(localModel.pulled, QStringList(u"qwen3:4b"_s));
    EXPECT_EQ(settings->model(), u"qwen3:4b"_s);
    EXPECT_EQ(model->localModel().pullingModel(), QString());
    EXPECT_FALSE(model->localModel().info().progressFraction);
    EXPECT_TRUE(model->localModel().info().running);
    EXPECT_EQ(activityTexts(),
              QStringList({u"Downloading the qwen3:4b model…"_s,
                           u"The qwen3:4b model is installed and set as the active model."_s}));
    EXPECT_THAT(announcer.spoken,
                Contains(u"Downloading the qwen3:4b model. This may take a few minutes."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"The qwen3:4b model is installed and now active."_s));
}

TEST_F(LocalModelFlowTest, APullStartsTheServerWhereItDoesNotRun)
{
    localModel.pullTime = 1h;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(localModel.installations, 1);
    EXPECT_EQ(localModel.pulled, QStringList(u"qwen3:4b"_s));
}

TEST_F(LocalModelFlowTest, APullLeavesAServerThatRunsAsItIs)
{
    localModel.serverRunning = true;
    localModel.pullTime = 1h;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(localModel.installations, 0);
}

TEST_F(LocalModelFlowTest, AFailedPullIsToldAndChangesNothing)
{
    localModel.pullFailure = u"No network."_s;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
    EXPECT_EQ(model->localModel().info().error, u"No network."_s);
    EXPECT_EQ(model->localModel().info().progress, u"Downloading the qwen3:4b model failed. No network."_s);
    EXPECT_EQ(model->localModel().pullingModel(), QString());
    EXPECT_THAT(activityTexts(), Contains(u"Downloading the qwen3:4b model failed: No network."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"Downloading the qwen3:4b model failed. No network."_s));
}

TEST_F(LocalModelFlowTest, SwitchingTheProviderEndsAPull)
{
    localModel.pullTime = 1h;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    settings->setProviderID(ProviderID::groq);
    settle();
    EXPECT_EQ(model->localModel().pullingModel(), QString());
    EXPECT_THAT(activityTexts(), Contains(u"Downloading the qwen3:4b model was cancelled."_s));
}

TEST_F(LocalModelFlowTest, AMessageSentDuringAPullGetsItsAnswerAfterIt)
{
    localModel.pullTime = 1min;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    EXPECT_EQ(model->status().statusText(), u"Waiting for the local model setup to finish…"_s);
    service.willTurn(Service::Turn{}); // the request that loads the model
    service.willTurn(Service::answer(u"Hi."_s));
    clock.advance(1min);
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == "Hi."_L1; }));
}

TEST_F(LocalModelFlowTest, AMessageThatWaitsForAPullIsToldItsFailure)
{
    localModel.pullTime = 1min;
    localModel.pullFailure = u"No network."_s;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    clock.advance(1min);
    settle();
    EXPECT_EQ(lastMessage().errorMessage, u"No network."_s);
    EXPECT_FALSE(model->isInstallPending());
}

TEST_F(LocalModelFlowTest, DeletingTheChosenModelChoosesAnother)
{
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s, u"qwen3:4b"_s};
    service.willTurn(Service::Turn{});
    model->localModel().deleteLocalModel(u"qwen2.5"_s);
    model->localModel().deleteLocalModel(u"qwen2.5"_s);
    settle();
    EXPECT_EQ(localModel.removed, QStringList(u"qwen2.5"_s));
    EXPECT_EQ(settings->model(), u"qwen3:4b"_s);
    EXPECT_EQ(model->localModel().installedModels(), QStringList(u"qwen3:4b"_s));
    EXPECT_TRUE(model->localModel().info().running);
    EXPECT_THAT(activityTexts(), Contains(u"Deleted the qwen2.5 model."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"The qwen2.5 model was deleted."_s));
}

TEST_F(LocalModelFlowTest, DeletingTheOnlyModelLeavesTheStandardOneChosen)
{
    localModel.serverRunning = true;
    settings->setModel(u"qwen3:4b"_s);
    localModel.models = {u"qwen3:4b"_s};
    model->localModel().deleteLocalModel(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
    EXPECT_FALSE(model->localModel().info().running);
    EXPECT_EQ(model->localModel().info().progress,
              u"Ollama is running, but the qwen2.5 model is not downloaded yet."_s);
}

TEST_F(LocalModelFlowTest, DeletingAnotherModelLeavesTheChosenOne)
{
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s, u"qwen3:4b"_s};
    service.willTurn(Service::Turn{});
    model->localModel().deleteLocalModel(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
}

TEST_F(LocalModelFlowTest, AFailedDeletionIsTold)
{
    localModel.models = {u"qwen2.5"_s};
    localModel.removeFailure = u"Ollama could not delete the qwen2.5 model."_s;
    model->localModel().deleteLocalModel(u"qwen2.5"_s);
    settle();
    EXPECT_THAT(activityTexts(), Contains(u"Could not delete the qwen2.5 model: Ollama could not delete the "
                                          "qwen2.5 model."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"Could not delete the qwen2.5 model."_s));
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
}

TEST_F(LocalModelFlowTest, NothingIsDeletedDuringAPull)
{
    localModel.pullTime = 1h;
    localModel.models = {u"qwen2.5"_s};
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    model->localModel().deleteLocalModel(u"qwen2.5"_s);
    settle();
    EXPECT_TRUE(localModel.removed.isEmpty());
}

TEST_F(LocalModelFlowTest, ReadingTheStateDuringAnInstallationLeavesItsProgress)
{
    localModel.pullTime = 1h;
    model->localModel().installLocalModelIfNeeded();
    settle();
    ASSERT_EQ(model->localModel().info().progress, u"Downloading model… 42%"_s);
    refresh();
    EXPECT_EQ(model->localModel().info().progress, u"Downloading model… 42%"_s);
    EXPECT_EQ(model->localModel().info().progressFraction, 0.42);
    EXPECT_TRUE(model->localModel().info().installing);
}

TEST_F(LocalModelFlowTest, ModelInTheSettingsMayHaveLatest)
{
    settings->setModel(u"qwen2.5:latest"_s);
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    service.willTurn(Service::Turn{});
    refresh();
    EXPECT_TRUE(model->localModel().info().running);
}

TEST_F(LocalModelFlowTest, HostedProviderIsNotWarmedUp)
{
    settings->setProviderID(ProviderID::groq);
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    refresh();
    EXPECT_TRUE(model->localModel().info().running);
    EXPECT_TRUE(service.requests().isEmpty());
}

} // namespace
} // namespace morvane
