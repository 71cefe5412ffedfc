#include "support/AppFixture.h"

#include "base/Uuid.h"
#include "net/TransportError.h"
#include "providers/AIServiceError.h"

using namespace std::chrono_literals;
using testing::Contains;

namespace morvane {
namespace {

using Service = FakeAIService;

class AppModelTest : public AppFixture {
protected:
    ChatAttachment attachment(AttachmentKind kind, const QString &name) const
    {
        ChatAttachment result;
        result.id = QUuid::createUuid();
        result.kind = kind;
        result.filename = name;
        return result;
    }
};

TEST_F(AppModelTest, FirstMessageOf41CharactersGivesATitleOf40)
{
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QString(41, QLatin1Char('t')));
    EXPECT_EQ(model->currentTitle(), QString(40, QLatin1Char('t')));
}

TEST_F(AppModelTest, EmptyTextWithOneAttachmentIsAcceptedAndNamedByTheFile)
{
    service.willTurn(Service::answer(QStringLiteral("ok")));
    ASSERT_TRUE(
        model->send(QStringLiteral("  \n"), {attachment(AttachmentKind::text, QStringLiteral("notes.txt"))}));
    finishRun();
    EXPECT_EQ(model->currentTitle(), QStringLiteral("notes.txt"));
    EXPECT_EQ(model->messages().first().text, QString());
    EXPECT_TRUE(service.titleRequests().isEmpty());
}

TEST_F(AppModelTest, EmptyTextWithoutAttachmentsIsRefused)
{
    EXPECT_FALSE(model->send(QStringLiteral(" \n\t"), {}));
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(AppModelTest, ImageForAModelThatCannotSeeAddsNothing)
{
    settings->setProviderID(ProviderID::groq);
    settings->setModel(QStringLiteral("llama-3.3-70b-versatile"));
    EXPECT_FALSE(model->send(QStringLiteral("look"),
                             {attachment(AttachmentKind::image, QStringLiteral("photo.png"))}));
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Current model can't see images"));
    EXPECT_THAT(announcer.spoken,
                Contains(QStringLiteral(
                    "The current model can't see images. Switch to a vision model, like Gemini or G P T five "
                    "mini, to send this attachment, or remove the image.")));
}

TEST_F(AppModelTest, SecondMessageIsRefusedWhileBusy)
{
    neverAnswer();
    ASSERT_TRUE(model->send(QStringLiteral("one"), {}));
    EXPECT_TRUE(model->isBusy());
    EXPECT_FALSE(model->send(QStringLiteral("two"), {}));
    EXPECT_EQ(model->messages().size(), 2);
}

TEST_F(AppModelTest, RequiredUpdateStopsNewRequests)
{
    updates.update = UpdateInfo{QStringLiteral("2.1"), 77};
    updates.required = true;
    EXPECT_FALSE(model->send(QStringLiteral("hi"), {}));
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Update required: 2.1 build 77"));
    EXPECT_THAT(announcer.spoken,
                Contains(QStringLiteral("This update is required to continue. Please update "
                                        "Morvane to 2.1 build 77 now.")));
}

TEST_F(AppModelTest, MissingKeyEndsTheRequestAndSendingAgainCarriesBothMessages)
{
    settings->setProviderID(ProviderID::openai);
    ASSERT_TRUE(model->send(QStringLiteral("one"), {}));
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(lastMessage().errorMessage,
              QStringLiteral("No API key is set. Open Settings to add your free API key."));
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Waiting for API key"));
    EXPECT_THAT(announcer.spoken,
                Contains(QStringLiteral("Morvane needs an API key. Open Settings and choose "
                                        "a provider to get started.")));
    settings->setApiKey(QStringLiteral("key"));
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("two"));
    EXPECT_EQ(service.requests().value(0).context.size(), 2);
}

TEST_F(AppModelTest, ConfigurationCarriesPromptMachineToolsAndBrowserNote)
{
    settings->setSystemPrompt(QStringLiteral("Be brief."));
    settings->setModel(QStringLiteral(" scripted \n"));
    settings->setUseTools(false);
    browserWindow.visible = true;
    AITool serverTool;
    serverTool.name = QStringLiteral("mcp_x_y");
    toolServers.tools = {serverTool};
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("hi"));
    const AIConfiguration config = service.requests().value(0).config;
    EXPECT_EQ(
        config.systemPrompt,
        QStringLiteral(
            "Be brief.\n\nYou are running on: Test machine.\n\n[Browser window is open — the user watches "
            "live. For web tasks use "
            "browser_open/browser_read/browser_click/browser_type/browser_scroll/browser_back. You can do "
            "anything in the browser: click links, fill forms, type and submit. Use browser_* tools, then "
            "browser_read to verify.]"));
    EXPECT_EQ(config.model, QStringLiteral("scripted"));
    EXPECT_FALSE(config.maxTokens.has_value());
    ASSERT_EQ(config.tools.size(), 1);
    EXPECT_EQ(config.tools.first().name, QStringLiteral("mcp_x_y"));
}

TEST_F(AppModelTest, ConnectionFailureIsToldInPlainWords)
{
    service.willTurn(
        Service::failure(std::make_exception_ptr(TransportError(TransportError::Kind::CannotConnectToHost))));
    sendAndFinish(QStringLiteral("hi"));
    EXPECT_EQ(lastMessage().errorMessage,
              QStringLiteral("Could not connect to the AI provider. Check your internet connection and try "
                             "again."));
}

TEST_F(AppModelTest, FailedRequestIsSavedLikeAnyOther)
{
    service.willTurn(
        Service::failure(std::make_exception_ptr(AIServiceError(AIServiceError::Api{QString()}))));
    sendAndFinish(QStringLiteral("hi"));
    const auto list = listed();
    ASSERT_EQ(list.size(), 1);
    const auto file = runTask(scheduler, store->load(list.first().id));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->messages.last().errorMessage, QStringLiteral("The AI provider returned an error."));
}

TEST_F(AppModelTest, FinishedAnswerIsNotifiedAndSpoken)
{
    service.willTurn(Service::answer(QStringLiteral("The answer.")));
    sendAndFinish(QStringLiteral("hi"));
    ASSERT_EQ(notifications.notified.size(), 1);
    EXPECT_EQ(notifications.notified.first().first, QStringLiteral("The answer."));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Morvane is responding.")));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("The answer.")));
}

TEST_F(AppModelTest, ProgressIsNotSpokenWhenTheUserDoesNotWantIt)
{
    settings->setAnnounceResponses(false);
    service.willTurn(Service::answer(QStringLiteral("The answer.")));
    sendAndFinish(QStringLiteral("hi"));
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(AppModelTest, CancelWithNothingRunningSavesAndLeavesTheStatus)
{
    service.willTurn(Service::failure(std::make_exception_ptr(AIServiceError(AIServiceError::Blocked{}))));
    sendAndFinish(QStringLiteral("hi"));
    announcer.spoken.clear();
    model->cancel();
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Error"));
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(AppModelTest, CancelFreesTheInterfaceAtOnceAndKeepsTheStreamedText)
{
    Service::Turn turn;
    turn.tokens = {QString(250, QLatin1Char('a'))};
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(QStringLiteral("hi"), {}));
    settle();
    model->cancel();
    EXPECT_FALSE(model->isBusy());
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Cancelled"));
    settle();
    EXPECT_EQ(lastMessage().text, QString(250, QLatin1Char('a')));
    EXPECT_EQ(announcer.spoken.count(QStringLiteral("Generation cancelled.")), 2);
    EXPECT_EQ(notifications.sounds.count(QStringLiteral("MorvaneCancelled")), 2);
    EXPECT_TRUE(service.titleRequests().isEmpty());
    EXPECT_EQ(model->context().size(), 1);
    EXPECT_EQ(listed().size(), 1);
}

TEST_F(AppModelTest, CancelAnswersAWaitingApprovalWithNo)
{
    service.willTurn(Service::calls({toolCall(QStringLiteral("edit_file"))}));
    ASSERT_TRUE(model->send(QStringLiteral("edit"), {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->cancel();
    settle();
    EXPECT_FALSE(model->gate().pendingToolCall().has_value());
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_EQ(service.requests().size(), 1);
}

TEST_F(AppModelTest, CancelLeavesAWaitingQuestionOpen)
{
    service.willTurn(Service::calls({toolCall(QStringLiteral("ask_user"), R"({"question":"Which?"})")}));
    ASSERT_TRUE(model->send(QStringLiteral("go"), {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    model->cancel();
    settle();
    EXPECT_TRUE(model->questions().pendingQuestion().has_value());
    model->questions().resolveQuestion(QStringLiteral("that"));
    settle();
    EXPECT_EQ(service.requests().size(), 1);
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Cancelled"));
}

TEST_F(AppModelTest, OnboardingIsShownUntilItIsDoneOrSkipped)
{
    EXPECT_TRUE(model->showOnboarding());
    model->completeOnboarding();
    EXPECT_FALSE(model->showOnboarding());
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Let's get started. Ask me anything.")));
    start();
    EXPECT_FALSE(model->showOnboarding());
}

TEST_F(AppModelTest, SkippingOnboardingSaysWhereToChooseAProvider)
{
    model->skipOnboarding();
    EXPECT_FALSE(model->showOnboarding());
    EXPECT_THAT(announcer.spoken,
                Contains(QStringLiteral("Skipped local model setup. Open Settings to choose a provider.")));
}

} // namespace
} // namespace morvane
