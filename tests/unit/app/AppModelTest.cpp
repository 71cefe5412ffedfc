#include "support/AppFixture.h"

#include "base/Uuid.h"
#include "net/TransportError.h"
#include "providers/AIServiceError.h"
#include "support/AskForPermit.h"
#include "support/FileSizeLimit.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;

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
    /// The next start is the first.
    void greetAgain()
    {
        settings->setValue(u"hasCompletedOnboarding"_s, false);
        start();
    }
};

TEST_F(AppModelTest, FirstMessageOf41CharactersGivesATitleOf40)
{
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(QString(41, u't'));
    EXPECT_EQ(model->currentTitle(), QString(40, u't'));
}

TEST_F(AppModelTest, EmptyTextWithOneAttachmentIsAcceptedAndNamedByTheFile)
{
    service.willTurn(Service::answer(u"ok"_s));
    ASSERT_TRUE(model->send(u"  \n"_s, {attachment(AttachmentKind::text, u"notes.txt"_s)}));
    finishRun();
    EXPECT_EQ(model->currentTitle(), u"notes.txt"_s);
    EXPECT_EQ(model->messages().first().text, QString());
    EXPECT_TRUE(service.titleRequests().isEmpty());
}

TEST_F(AppModelTest, EmptyTextWithoutAttachmentsIsRefused)
{
    EXPECT_FALSE(model->send(u" \n\t"_s, {}));
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(AppModelTest, ImageForAModelThatCannotSeeAddsNothing)
{
    settings->setProviderID(ProviderID::groq);
    settings->setModel(u"llama-3.3-70b-versatile"_s);
    EXPECT_FALSE(model->send(u"look"_s, {attachment(AttachmentKind::image, u"photo.png"_s)}));
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(model->status().statusText(), u"Current model can't see images"_s);
    EXPECT_THAT(
        announcer.spoken,
        Contains(u"The current model can't see images. Switch to a vision model, like Gemini or G P T five "
                 "mini, to send this attachment, or remove the image."_s));
}

TEST_F(AppModelTest, SecondMessageIsRefusedWhileBusy)
{
    neverAnswer();
    ASSERT_TRUE(model->send(u"one"_s, {}));
    EXPECT_TRUE(model->isBusy());
    EXPECT_FALSE(model->send(u"two"_s, {}));
    EXPECT_EQ(model->messages().size(), 2);
}

TEST_F(AppModelTest, RequiredUpdateStopsNewRequests)
{
    updates.manifest = sampleUpdate(u"2.1"_s, 77);
    updates.manifest.required = true;
    runTask(scheduler, model->updates().checkForUpdates(UpdateModel::Occasion::programStart));
    EXPECT_FALSE(model->send(u"hi"_s, {}));
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(model->status().statusText(), u"Update required: 2.1 build 77"_s);
    EXPECT_THAT(announcer.spoken, Contains(u"This update is required to continue. Please update "
                                           "Morvane to 2.1 build 77 now."_s));
}

TEST_F(AppModelTest, MissingKeyEndsTheRequestAndSendingAgainCarriesBothMessages)
{
    settings->setProviderID(ProviderID::openai);
    ASSERT_TRUE(model->send(u"one"_s, {}));
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(lastMessage().errorMessage, u"No API key is set. Open Settings to add your free API key."_s);
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_EQ(model->status().statusText(), u"Waiting for API key"_s);
    EXPECT_THAT(announcer.spoken, Contains(u"Morvane needs an API key. Open Settings and choose "
                                           "a provider to get started."_s));
    settings->setApiKey(u"key"_s);
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"two"_s);
    EXPECT_EQ(service.requests().value(0).context.size(), 2);
}

TEST_F(AppModelTest, ConfigurationCarriesPromptMachineToolsAndBrowserNote)
{
    settings->setSystemPrompt(u"Be brief."_s);
    settings->setModel(u" scripted \n"_s);
    settings->setUseTools(false);
    browserWindow.visible = true;
    AITool serverTool;
    serverTool.name = u"mcp_x_y"_s;
    toolServers.tools = {serverTool};
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"hi"_s);
    const AIConfiguration config = service.requests().value(0).config;
    EXPECT_EQ(config.systemPrompt,
              u"Be brief.\n\nYou are running on: Test machine.\n\n[Browser window is open — the user watches "
              "live. For web tasks use "
              "browser_open/browser_read/browser_click/browser_type/browser_scroll/browser_back. You can do "
              "anything in the browser: click links, fill forms, type and submit. Use browser_* tools, then "
              "browser_read to verify.]"_s);
    EXPECT_EQ(config.model, u"scripted"_s);
    EXPECT_FALSE(config.maxTokens.has_value());
    ASSERT_EQ(config.tools.size(), 1);
    EXPECT_EQ(config.tools.first().name, u"mcp_x_y"_s);
}

TEST_F(AppModelTest, TheBrowserIsNotMentionedWhileItsWindowIsClosed)
{
    settings->setSystemPrompt(u"Be brief."_s);
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"hi"_s);
    EXPECT_EQ(service.requests().value(0).config.systemPrompt,
              u"Be brief.\n\nYou are running on: Test machine."_s);
}

TEST_F(AppModelTest, ANoteGoesToTheModelAndIsNotShown)
{
    service.willTurn(Service::answer(u"ok"_s));
    ASSERT_TRUE(model->send(u" Read it \n"_s, {}, u" [Browser window is open]"_s));
    finishRun();
    EXPECT_EQ(model->messages().first().text, u"Read it"_s);
    EXPECT_EQ(contextEntries<APIMessage::User>().value(0).text, u"Read it [Browser window is open]"_s);
}

TEST_F(AppModelTest, AnswerWithoutTextIsSaidToBeOne)
{
    service.willTurn(Service::Turn{});
    sendAndFinish(u"hi"_s);
    EXPECT_EQ(announcer.spoken.constLast(), u"Morvane did not return any text."_s);
    EXPECT_EQ(notifications.notified.value(0).first, QString());
}

TEST_F(AppModelTest, ConnectionFailureIsToldInPlainWords)
{
    service.willTurn(
        Service::failure(std::make_exception_ptr(TransportError(TransportError::Kind::cannotConnectToHost))));
    sendAndFinish(u"hi"_s);
    EXPECT_EQ(lastMessage().errorMessage,
              u"Could not connect to the AI provider. Check your internet connection and try "
              "again."_s);
}

TEST_F(AppModelTest, FailedRequestIsSavedLikeAnyOther)
{
    service.willTurn(
        Service::failure(std::make_exception_ptr(AIServiceError(AIServiceError::Api{QString()}))));
    sendAndFinish(u"hi"_s);
    const auto list = listed();
    ASSERT_EQ(list.size(), 1);
    const auto file = runTask(scheduler, store->load(list.first().id));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->messages.last().errorMessage, u"The AI provider returned an error."_s);
}

TEST_F(AppModelTest, FinishedAnswerIsNotifiedAndSpoken)
{
    service.willTurn(Service::answer(u"The answer."_s));
    sendAndFinish(u"hi"_s);
    ASSERT_EQ(notifications.notified.size(), 1);
    EXPECT_EQ(notifications.notified.first().first, u"The answer."_s);
    EXPECT_THAT(announcer.spoken, Contains(u"Morvane is responding."_s));
    EXPECT_THAT(announcer.spoken, Contains(u"The answer."_s));
}

TEST_F(AppModelTest, ProgressIsNotSpokenWhenTheUserDoesNotWantIt)
{
    settings->setAnnounceResponses(false);
    service.willTurn(Service::answer(u"The answer."_s));
    sendAndFinish(u"hi"_s);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(AppModelTest, WhatTheUserMustActOnIsSpokenWithTheSettingOff)
{
    settings->setAnnounceResponses(false);
    service.willTurn(
        Service::calls({toolCall(u"edit_file"_s, R"({"file_path":"/x"})"),
                        toolCall(u"ask_user"_s, R"({"question":"Which?"})"),
                        toolCall(u"task"_s, R"({"description":"look","subagent":"explorer"})")}));
    service.willTurn(Service::calls({toolCall(u"edit_file"_s, R"({"file_path":"/y"})")}));
    service.willTurn(Service::answer(u"seen"_s));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->gate().resolvePermission(true, false);
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    model->questions().resolveQuestion(u"this"_s);
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->gate().resolvePermission(false, false);
    finishRun();
    const QString error = u"There was an error. the test wrote down no further turn"_s;
    EXPECT_THAT(announcer.spoken,
                ElementsAre(u"Morvane wants to edit the file at /x. Do you allow it?"_s,
                            u"Morvane asks: Which?"_s,
                            u"A subagent wants to edit the file at /y. Do you allow it?"_s, error));
    announcer.spoken.clear();
    neverAnswer();
    ASSERT_TRUE(model->send(u"go"_s, {}));
    model->cancel();
    settings->setProviderID(ProviderID::openai);
    settle();
    ASSERT_TRUE(model->send(u"go"_s, {}));
    EXPECT_THAT(
        announcer.spoken,
        ElementsAre(u"Generation cancelled."_s, u"Generation cancelled."_s,
                    u"Morvane needs an API key. Open Settings and choose a provider to get started."_s));
}

TEST_F(AppModelTest, CancelWithNothingRunningSavesAndLeavesTheStatus)
{
    service.willTurn(Service::failure(std::make_exception_ptr(AIServiceError(AIServiceError::Blocked{}))));
    sendAndFinish(u"hi"_s);
    announcer.spoken.clear();
    model->cancel();
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(model->status().statusText(), u"Error"_s);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(AppModelTest, TheEndOfARunAtTheUsersWishStopsThePageThatItWorksIn)
{
    model->cancel();
    EXPECT_EQ(browserWindow.stops, 0);
    neverAnswer();
    model->send(u"hello"_s, {});
    settle();
    model->cancel();
    EXPECT_EQ(browserWindow.stops, 1);
    finishRun();
    neverAnswer();
    model->send(u"hello"_s, {});
    settle();
    model->newConversation();
    EXPECT_EQ(browserWindow.stops, 2);
}

TEST_F(AppModelTest, CancelFreesTheInterfaceAtOnceAndKeepsTheStreamedText)
{
    Service::Turn turn;
    turn.tokens = {QString(250, u'a')};
    turn.silence = 1h;
    service.willTurn(turn);
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    settle();
    model->cancel();
    EXPECT_FALSE(model->isBusy());
    EXPECT_FALSE(lastMessage().isStreaming);
    EXPECT_EQ(model->status().statusText(), u"Cancelled"_s);
    settle();
    EXPECT_EQ(lastMessage().text, QString(250, u'a'));
    EXPECT_EQ(announcer.spoken.count(u"Generation cancelled."_s), 2);
    EXPECT_EQ(notifications.sounds.count(u"MorvaneCancelled"_s), 2);
    EXPECT_TRUE(service.titleRequests().isEmpty());
    EXPECT_EQ(model->context().size(), 1);
    EXPECT_EQ(listed().size(), 1);
}

TEST_F(AppModelTest, CancelAnswersAWaitingApprovalWithNo)
{
    service.willTurn(Service::calls({toolCall(u"edit_file"_s)}));
    ASSERT_TRUE(model->send(u"edit"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->cancel();
    settle();
    EXPECT_FALSE(model->gate().pendingToolCall().has_value());
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_EQ(service.requests().size(), 1);
}

TEST_F(AppModelTest, CancelLeavesAWaitingQuestionOpen)
{
    service.willTurn(Service::calls({toolCall(u"ask_user"_s, R"({"question":"Which?"})")}));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    model->cancel();
    settle();
    EXPECT_TRUE(model->questions().pendingQuestion().has_value());
    model->questions().resolveQuestion(u"that"_s);
    settle();
    EXPECT_EQ(service.requests().size(), 1);
    EXPECT_EQ(model->status().statusText(), u"Cancelled"_s);
}

TEST_F(AppModelTest, CancelSavesAtOnceWhileTheRunIsSlowToNotice)
{
    service.willTurn(FakeAIService::calls({toolCall(u"ask_user"_s, R"({"question":"Sure?"})")}));
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    model->cancel();
    ASSERT_TRUE(model->currentConversationID().has_value());
    const auto file = runTask(scheduler, store->load(*model->currentConversationID()));
    ASSERT_TRUE(file);
    ASSERT_EQ(file->messages.size(), 2);
    EXPECT_FALSE(file->messages.last().isStreaming);
    model->questions().resolveQuestion(u"no"_s);
    settle();
}

TEST_F(AppModelTest, AMessageIsOnTheDiskWhenItWasSent)
{
    service.willTurn(Service::answer(u"one"_s));
    sendAndFinish(u"first"_s);
    const auto savedTexts = [this] {
        QStringList texts;
        const auto file = runTask(scheduler, store->load(model->currentConversationID().value_or(QUuid())));
        for (const ChatMessage &message : file ? file->messages : QList<ChatMessage>()) {
            EXPECT_FALSE(message.isStreaming);
            texts.append(message.text);
        }
        return texts;
    };
    neverAnswer();
    ASSERT_TRUE(model->send(u"second"_s, {}));
    EXPECT_EQ(savedTexts(), (QStringList{"first", "one", "second"}));
    model->newConversation();
    neverAnswer();
    ASSERT_TRUE(model->send(u"third"_s, {}));
    EXPECT_EQ(savedTexts(), QStringList{"third"});
    EXPECT_EQ(model->conversations().list().front().title, u"third"_s);
}

TEST_F(AppModelTest, AMessageThatAFullDiskRefusedIsSavedWithItsAnswer)
{
    Service::Turn turn = Service::answer(u"one"_s);
    turn.silence = 5s;
    service.willTurn(turn);
    {
        const FileSizeLimit full(0);
        ASSERT_TRUE(model->send(u"first"_s, {}));
        settle();
    }
    const QUuid id = model->currentConversationID().value_or(QUuid());
    EXPECT_FALSE(runTask(scheduler, store->load(id)));
    EXPECT_TRUE(model->isBusy());
    clock.advance(5s);
    finishRun();
    const auto file = runTask(scheduler, store->load(id));
    ASSERT_TRUE(file);
    ASSERT_EQ(file->messages.size(), 2);
    EXPECT_EQ(file->messages.first().text, u"first"_s);
    EXPECT_EQ(file->messages.last().text, u"one"_s);
}

TEST_F(AppModelTest, OnboardingIsShownUntilItIsDoneOrSkipped)
{
    greetAgain();
    EXPECT_TRUE(model->showOnboarding());
    model->completeOnboarding();
    EXPECT_FALSE(model->showOnboarding());
    EXPECT_THAT(announcer.spoken, Contains(u"Let's get started. Ask me anything."_s));
    start();
    EXPECT_FALSE(model->showOnboarding());
}

TEST_F(AppModelTest, SkippingOnboardingSaysWhereToChooseAProvider)
{
    greetAgain();
    model->skipOnboarding();
    EXPECT_FALSE(model->showOnboarding());
    EXPECT_THAT(announcer.spoken,
                Contains(u"Skipped local model setup. Open Settings to choose a provider."_s));
}

} // namespace
} // namespace morvane
