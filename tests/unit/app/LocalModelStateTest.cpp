#include "net/TransportError.h"
#include "support/AppFixture.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

using Service = FakeAIService;

/// What is known of the runtime and its model, and what follows from that.
class LocalModelStateTest : public AppFixture {
protected:
    LocalModelStateTest()
    {
        settings->setProviderID(ProviderID::ollama);
        settings->setModel(u"qwen2.5"_s);
    }

    void refresh()
    {
        model->localModel().refreshLocalModel();
        settle();
    }
    /// The server runs and has these models.
    void haveModels(const QStringList &models)
    {
        localModel.serverRunning = true;
        localModel.models = models;
        service.willTurn(Service::Turn{}); // the request that loads the model
    }
    const LocalModelInfo &info() const { return model->localModel().info(); }
    /// With `chosen` in the settings and this model there, it is ready.
    void expectReady(const QString &chosen, const QString &model)
    {
        settings->setModel(chosen);
        haveModels({model});
        refresh();
        EXPECT_TRUE(info().running);
        EXPECT_EQ(info().progress, u"The %1 model is ready."_s.arg(model));
    }
};

TEST_F(LocalModelStateTest, TellsWhatIsMissing)
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

TEST_F(LocalModelStateTest, ModelCountsAsInstalledWithAndWithoutLatest)
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

TEST_F(LocalModelStateTest, ReadingTheStateDuringAnInstallationLeavesItsProgress)
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

TEST_F(LocalModelStateTest, ModelInTheSettingsMayHaveLatest)
{
    settings->setModel(u"qwen2.5:latest"_s);
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    service.willTurn(Service::Turn{});
    refresh();
    EXPECT_TRUE(model->localModel().info().running);
}

TEST_F(LocalModelStateTest, AServerThatHasEndedIsStartedAgainByTheNextMessage)
{
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    service.willTurn(Service::Turn{}); // the request that loads the model
    refresh();
    localModel.serverRunning = false;
    service.willTurn(
        Service::failure(std::make_exception_ptr(TransportError(TransportError::Kind::cannotConnectToHost))));
    sendAndFinish(u"hello"_s);
    EXPECT_EQ(lastMessage().errorMessage,
              u"Could not connect to the AI provider. Check your internet connection and try again."_s);
    EXPECT_FALSE(model->localModel().info().running);
    EXPECT_EQ(localModel.installations, 0);
    service.willTurn(Service::Turn{}); // the request that loads the model
    service.willTurn(Service::answer(u"Hi."_s));
    sendAndFinish(u"hello again"_s);
    ASSERT_TRUE(waitUntil([this] { return lastMessage().text == "Hi."_L1; }));
    EXPECT_EQ(localModel.installations, 1);
    EXPECT_TRUE(localModel.pulled.isEmpty());
}

TEST_F(LocalModelStateTest, HostedProviderIsNotWarmedUp)
{
    settings->setProviderID(ProviderID::groq);
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s};
    refresh();
    EXPECT_TRUE(model->localModel().info().running);
    EXPECT_TRUE(service.requests().isEmpty());
}

TEST_F(LocalModelStateTest, WithoutANameTheStandardModelIsMeant)
{
    expectReady(u"  "_s, u"qwen2.5"_s);
}

TEST_F(LocalModelStateTest, BlanksAroundTheNameAreNotPartOfIt)
{
    expectReady(u" qwen3:4b\n"_s, u"qwen3:4b"_s);
}

TEST_F(LocalModelStateTest, AReadyModelEndsAnOlderFailure)
{
    localModel.failure = u"No room."_s;
    model->localModel().installLocalModelIfNeeded();
    settle();
    ASSERT_EQ(info().error, u"No room."_s);
    haveModels({u"qwen2.5"_s});
    refresh();
    EXPECT_EQ(info().error, QString());
}

TEST_F(LocalModelStateTest, AReadyModelIsNotInstalledAgain)
{
    haveModels({u"qwen2.5"_s});
    refresh();
    model->localModel().installLocalModelIfNeeded();
    settle();
    EXPECT_EQ(localModel.installations, 0);
    EXPECT_FALSE(activityTexts().contains(
        u"Setting up the local model. This is a one-time download of a few gigabytes."_s));
}

TEST_F(LocalModelStateTest, WhatAnOlderReadingFindsOutIsOutOfDate)
{
    localModel.probeTime = 1min;
    model->localModel().refreshLocalModel(); // while the server does not run
    settle();
    haveModels({u"qwen2.5"_s});
    localModel.probeTime = {};
    refresh();
    clock.advance(1min);
    settle();
    EXPECT_TRUE(info().running);
}

TEST_F(LocalModelStateTest, WhatAnInstallationHasReachedIsNotTakenBackByAnOlderReading)
{
    localModel.probeTime = 1min;
    model->localModel().refreshThenInstall(LocalModelFlow::Occasion::programStart);
    settle();
    service.willTurn(Service::Turn{}); // the request that loads the model
    model->localModel().installLocalModelIfNeeded();
    settle();
    ASSERT_TRUE(info().running);
    clock.advance(1min);
    settle();
    EXPECT_TRUE(info().running);
    EXPECT_EQ(localModel.installations, 1);
}

TEST_F(LocalModelStateTest, TheModelIsLoadedByARequestLikeThoseOfTheAgent)
{
    settings->setModel(u" qwen3:4b "_s);
    settings->setSystemPrompt(u"Be brief."_s);
    settings->setTemperature(0.3);
    haveModels({u"qwen3:4b"_s});
    refresh();
    ASSERT_EQ(service.requests().size(), 1);
    const Service::Request &request = service.requests().constFirst();
    EXPECT_EQ(request.config.provider, ProviderID::ollama);
    EXPECT_EQ(request.config.model, u"qwen3:4b"_s);
    EXPECT_EQ(request.config.systemPrompt, u"Be brief.\n\nYou are running on: Test machine."_s);
    EXPECT_EQ(request.config.temperature, 0.3);
    EXPECT_FALSE(request.config.maxTokens);
    EXPECT_FALSE(request.config.tools.isEmpty());
    ASSERT_EQ(request.context.size(), 1);
    EXPECT_EQ(std::get<APIMessage::User>(request.context.constFirst().entry).text, u"Say OK."_s);
}

TEST_F(LocalModelStateTest, WithoutToolsTheModelIsLoadedWithoutThem)
{
    settings->setUseTools(false);
    haveModels({u"qwen2.5"_s});
    refresh();
    ASSERT_EQ(service.requests().size(), 1);
    EXPECT_TRUE(service.requests().constFirst().config.tools.isEmpty());
}

} // namespace
} // namespace morvane
