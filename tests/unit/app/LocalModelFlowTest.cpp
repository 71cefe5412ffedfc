#include "support/AppFixture.h"

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
        settings->setModel(QStringLiteral("qwen2.5"));
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
    EXPECT_EQ(model->localModel().info().progress, QStringLiteral("Ollama is not installed yet."));
    localModel.binaryInstalled = true;
    refresh();
    EXPECT_EQ(model->localModel().info().progress, QStringLiteral("Ollama is not running."));
    localModel.serverRunning = true;
    refresh();
    EXPECT_EQ(model->localModel().info().progress,
              QStringLiteral("Ollama is running, but the qwen2.5 model is not downloaded yet."));
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
    EXPECT_EQ(model->localModel().info().progress, QStringLiteral("The qwen2.5 model is ready."));
}

TEST_F(LocalModelFlowTest, MessageWaitsForTheInstallationAndGetsItsAnswer)
{
    localModel.installationTime = 1min;
    ASSERT_TRUE(model->send(QStringLiteral("hello"), {}));
    settle();
    EXPECT_TRUE(model->isInstallPending());
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Setting up local model…"));
    EXPECT_FALSE(model->send(QStringLiteral("second"), {}));
    EXPECT_EQ(model->messages().size(), 2);
    service.willTurn(Service::Turn{}); // the request that loads the model
    service.willTurn(Service::answer(QStringLiteral("Hi.")));
    clock.advance(1min);
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == QLatin1String("Hi."); }));
    finishRun();
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_THAT(announcer.spoken,
                Contains(QStringLiteral("The local model is ready. You can start chatting.")));
}

TEST_F(LocalModelFlowTest, MessageSentDuringAnInstallationWaitsForIt)
{
    localModel.installationTime = 1min;
    model->localModel().installLocalModelIfNeeded();
    model->localModel().installLocalModelIfNeeded();
    settle();
    ASSERT_TRUE(model->send(QStringLiteral("hello"), {}));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Waiting for the local model setup to finish…"));
    EXPECT_THAT(announcer.spoken,
                Contains(QStringLiteral("Waiting for the local model setup before sending.")));
    service.willTurn(Service::Turn{}); // the request that loads the model
    service.willTurn(Service::answer(QStringLiteral("Hi.")));
    clock.advance(1min);
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == QLatin1String("Hi."); }));
    EXPECT_EQ(localModel.installations, 1);
}

TEST_F(LocalModelFlowTest, FailedInstallationShowsItsErrorInTheWaitingRow)
{
    localModel.failure = QStringLiteral("No room.");
    ASSERT_TRUE(model->send(QStringLiteral("hello"), {}));
    ASSERT_TRUE(waitUntil([this] { return lastMessage().errorMessage.has_value(); }));
    settle();
    EXPECT_EQ(lastMessage().errorMessage, QStringLiteral("No room."));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Local model not ready"));
    EXPECT_EQ(model->localModel().info().error, QStringLiteral("No room."));
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Local model setup failed: No room.")));
}

TEST_F(LocalModelFlowTest, StopEndsTheInstallationToo)
{
    localModel.installationTime = 1h;
    ASSERT_TRUE(model->send(QStringLiteral("hello"), {}));
    settle();
    model->cancel();
    settle();
    EXPECT_FALSE(model->isInstallPending());
    EXPECT_FALSE(model->localModel().info().installing);
    EXPECT_THAT(activityTexts(), Contains(QStringLiteral("Local model setup was cancelled.")));
}

TEST_F(LocalModelFlowTest, SwitchingTheProviderEndsAWaitingMessage)
{
    localModel.installationTime = 1h;
    ASSERT_TRUE(model->send(QStringLiteral("hello"), {}));
    settle();
    settings->setProviderID(ProviderID::groq);
    settle();
    EXPECT_EQ(lastMessage().errorMessage,
              QStringLiteral("Switched to another provider before the local model finished downloading."));
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_FALSE(model->isInstallPending());
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

TEST_F(LocalModelFlowTest, HostedProviderIsNotWarmedUp)
{
    settings->setProviderID(ProviderID::groq);
    localModel.serverRunning = true;
    localModel.models = {QStringLiteral("qwen2.5")};
    refresh();
    EXPECT_TRUE(model->localModel().info().running);
    EXPECT_TRUE(service.requests().isEmpty());
}

} // namespace
} // namespace morvane
