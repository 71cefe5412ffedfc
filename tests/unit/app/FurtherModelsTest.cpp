#include "support/AppFixture.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;

namespace morvane {
namespace {

using Service = FakeAIService;

/// Further models: downloaded, used, taken out of memory and deleted.
class FurtherModelsTest : public AppFixture {
protected:
    FurtherModelsTest()
    {
        settings->setProviderID(ProviderID::ollama);
        settings->setModel(u"qwen2.5"_s);
    }

    /// Deletes the only model of a server that runs, with another or the same name chosen in the settings.
    void deleteOnlyModel(const QString &name, const QString &chosen)
    {
        localModel.serverRunning = true;
        settings->setModel(chosen);
        localModel.models = {name};
        model->localModel().deleteLocalModel(name);
        settle();
    }
};

TEST_F(FurtherModelsTest, APulledModelBecomesTheChosenOne)
{
    localModel.pullTime = 1min;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
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
    EXPECT_EQ(model->localModel().installedModels(), QStringList(u"qwen3:4b"_s));
    EXPECT_EQ(activityTexts(),
              QStringList({u"Downloading the qwen3:4b model…"_s,
                           u"The qwen3:4b model is installed and set as the active model."_s}));
    EXPECT_THAT(announcer.spoken,
                Contains(u"Downloading the qwen3:4b model. This may take a few minutes."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"The qwen3:4b model is installed and now active."_s));
}

TEST_F(FurtherModelsTest, APullStartsTheServerWhereItDoesNotRun)
{
    localModel.pullTime = 1h;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(localModel.installations, 1);
    EXPECT_EQ(localModel.pulled, QStringList(u"qwen3:4b"_s));
}

TEST_F(FurtherModelsTest, APullLeavesAServerThatRunsAsItIs)
{
    localModel.serverRunning = true;
    localModel.pullTime = 1h;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(localModel.installations, 0);
}

TEST_F(FurtherModelsTest, AFailedPullIsToldAndChangesNothing)
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

TEST_F(FurtherModelsTest, SwitchingTheProviderEndsAPull)
{
    localModel.pullTime = 1h;
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    settle();
    settings->setProviderID(ProviderID::groq);
    settle();
    EXPECT_EQ(model->localModel().pullingModel(), QString());
    EXPECT_FALSE(model->localModel().info().progressFraction);
    EXPECT_THAT(activityTexts(), Contains(u"Downloading the qwen3:4b model was cancelled."_s));
}

TEST_F(FurtherModelsTest, AMessageSentDuringAPullGetsItsAnswerAfterIt)
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

TEST_F(FurtherModelsTest, AMessageThatWaitsForAPullIsToldItsFailure)
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

TEST_F(FurtherModelsTest, DeletingTheChosenModelChoosesAnother)
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

TEST_F(FurtherModelsTest, DeletingTheOnlyModelLeavesTheStandardOneChosen)
{
    deleteOnlyModel(u"qwen3:4b"_s, u"qwen3:4b"_s);
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
    EXPECT_FALSE(model->localModel().info().running);
    EXPECT_EQ(model->localModel().info().progress,
              u"Ollama is running, but the qwen2.5 model is not downloaded yet."_s);
}

TEST_F(FurtherModelsTest, DeletingAnotherModelLeavesTheChosenOne)
{
    localModel.serverRunning = true;
    localModel.models = {u"qwen2.5"_s, u"qwen3:4b"_s};
    service.willTurn(Service::Turn{});
    model->localModel().deleteLocalModel(u"qwen3:4b"_s);
    settle();
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
}

TEST_F(FurtherModelsTest, AFailedDeletionIsTold)
{
    localModel.models = {u"qwen2.5"_s};
    localModel.removeFailure = u"Ollama could not delete the qwen2.5 model."_s;
    model->localModel().deleteLocalModel(u"qwen2.5"_s);
    settle();
    EXPECT_THAT(activityTexts(), Contains(u"Could not delete the qwen2.5 model: Ollama could not delete the "
                                          "qwen2.5 model."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"Could not delete the qwen2.5 model."_s));
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
    // It can be tried again.
    localModel.removeFailure.clear();
    model->localModel().deleteLocalModel(u"qwen2.5"_s);
    settle();
    EXPECT_EQ(localModel.removed.size(), 2);
    EXPECT_TRUE(localModel.models.isEmpty());
}

TEST_F(FurtherModelsTest, TheChosenModelIsTheDeletedOneWithLatestToo)
{
    deleteOnlyModel(u"qwen3"_s, u"qwen3:latest"_s);
    EXPECT_EQ(settings->model(), u"qwen2.5"_s);
}

TEST_F(FurtherModelsTest, NothingIsDeletedDuringAPull)
{
    localModel.pullTime = 1h;
    localModel.models = {u"qwen2.5"_s};
    model->localModel().pullLocalModelIfNeeded(u"qwen3:4b"_s);
    model->localModel().deleteLocalModel(u"qwen2.5"_s);
    settle();
    EXPECT_TRUE(localModel.removed.isEmpty());
}

TEST_F(FurtherModelsTest, TheMemoryOfTheChosenModelIsGivenBack)
{
    settings->setModel(u" qwen3:4b "_s);
    model->localModel().freeMemory();
    settle();
    EXPECT_EQ(localModel.unloaded, QStringList(u"qwen3:4b"_s));
    EXPECT_EQ(activityTexts(), QStringList(u"The memory of the qwen3:4b model is free."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"The memory of the qwen3:4b model is free."_s));
}

TEST_F(FurtherModelsTest, MemoryThatIsNotGivenBackIsTold)
{
    localModel.unloadFailure = u"Ollama could not free the memory of the qwen2.5 model."_s;
    model->localModel().freeMemory();
    settle();
    EXPECT_EQ(activityTexts(),
              QStringList(u"Could not free the memory of the qwen2.5 model: "_s + localModel.unloadFailure));
    EXPECT_THAT(announcer.spoken, Contains(u"Could not free the memory of the qwen2.5 model."_s));
}

} // namespace
} // namespace morvane
