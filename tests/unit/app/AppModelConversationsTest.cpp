#include "SavedConversations.h"

#include "async/OneShot.h"
#include "base/Uuid.h"

using namespace Qt::StringLiterals;

using testing::Contains;

namespace morvane {
namespace {

using Service = FakeAIService;

using AppModelConversationsTest = SavedConversations;

TEST_F(AppModelConversationsTest, UnusedNewConversationLeavesNoTrace)
{
    model->newConversation();
    settle();
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_THAT(announcer.spoken, Contains(u"New conversation started."_s));
}

TEST_F(AppModelConversationsTest, WhatBecomesOfConversationsIsSpokenOnlyWhereResponsesAre)
{
    for (const bool isWanted : {true, false}) {
        const QUuid id = savedConversation(u"Trip"_s, {message(Role::user, u"Where?"_s)});
        start();
        settings->setAnnounceResponses(isWanted);
        settle();
        announcer.spoken.clear();
        model->openConversation(id);
        settle();
        model->newConversation();
        settle();
        model->deleteConversation(id);
        settle();
        EXPECT_EQ(announcer.spoken, isWanted ? QStringList({u"Opened Trip."_s, u"New conversation started."_s,
                                                            u"Conversation deleted."_s})
                                             : QStringList());
    }
}

TEST_F(AppModelConversationsTest, AnOpenedConversationHasNoActivityAndNoStatusOfAnother)
{
    const QUuid id = savedConversation(u"Trip"_s, {message(Role::user, u"Where?"_s)});
    start();
    settle();
    model->activity().log(u"Something"_s, ActivityStep::Kind::info);
    model->status().setStatusText(u"Cancelled"_s);
    model->openConversation(id);
    EXPECT_TRUE(model->activity().steps().isEmpty());
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
}

TEST_F(AppModelConversationsTest, NewConversationSavesTheOldOne)
{
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    settle();
    model->newConversation();
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_TRUE(model->context().isEmpty());
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    EXPECT_FALSE(settings->value(u"currentConversationID"_s).isValid());
    EXPECT_EQ(listed().size(), 1);
}

TEST_F(AppModelConversationsTest, OpeningTheOpenConversationDoesNothing)
{
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"hi"_s);
    announcer.spoken.clear();
    model->openConversation(*model->currentConversationID());
    settle();
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(AppModelConversationsTest, OpeningAConversationRebuildsItsContext)
{
    const QUuid id = savedConversation(u"Trip"_s, {message(Role::user, u" Where? "_s),
                                                   message(Role::assistant, u"There."_s),
                                                   message(Role::assistant, u"  "_s)});
    start();
    model->openConversation(id);
    EXPECT_EQ(model->currentConversationID(), id);
    settle();
    EXPECT_EQ(model->messages().size(), 3);
    EXPECT_EQ(model->context().size(), 2);
    EXPECT_EQ(model->currentTitle(), u"Trip"_s);
    EXPECT_EQ(settings->value(u"currentConversationID"_s).toString(), uuidText(id));
    EXPECT_THAT(announcer.spoken, Contains(u"Opened Trip."_s));
}

TEST_F(AppModelConversationsTest, OpeningIsRefusedWhileBusy)
{
    const QUuid id = savedConversation(u"Trip"_s, {message(Role::user, u"x"_s)});
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    model->openConversation(id);
    settle();
    EXPECT_NE(model->currentConversationID(), id);
}

TEST_F(AppModelConversationsTest, UnreadableConversationOpensEmpty)
{
    const QUuid id = QUuid::createUuid();
    model->openConversation(id);
    EXPECT_EQ(model->currentConversationID(), id);
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_THAT(announcer.spoken, Contains(u"Opened the conversation."_s));
}

TEST_F(AppModelConversationsTest, DeletingAnotherConversationLeavesTheOpenOneAlone)
{
    const QUuid other = savedConversation(u"Old"_s, {message(Role::user, u"x"_s)});
    start();
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"hi"_s);
    model->deleteConversation(other);
    settle();
    EXPECT_EQ(model->messages().size(), 2);
    EXPECT_THAT(announcer.spoken, Contains(u"Conversation deleted."_s));
    EXPECT_EQ(listed().size(), 1);
}

TEST_F(AppModelConversationsTest, DeletingTheOpenConversationDoesNotBringItBack)
{
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    settle();
    model->saveCurrentConversation();
    model->deleteConversation(*model->currentConversationID());
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_FALSE(model->currentConversationID().has_value());
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_TRUE(model->conversations().list().isEmpty());
}

TEST_F(AppModelConversationsTest, StartRestoresTheLastConversation)
{
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"hi"_s);
    const QUuid id = *model->currentConversationID();
    start();
    EXPECT_EQ(model->currentConversationID(), id);
    EXPECT_EQ(model->messages().size(), 2);
    EXPECT_EQ(model->context().size(), 2);
    EXPECT_EQ(model->conversations().list().size(), 1);
}

TEST_F(AppModelConversationsTest, KeyOfAVanishedConversationIsIgnoredAndStays)
{
    const QString gone = uuidText(QUuid::createUuid());
    settings->setValue(u"currentConversationID"_s, gone);
    start();
    EXPECT_FALSE(model->currentConversationID().has_value());
    EXPECT_EQ(settings->value(u"currentConversationID"_s).toString(), gone);
    settings->setValue(u"currentConversationID"_s, u"no id"_s);
    start();
    EXPECT_FALSE(model->currentConversationID().has_value());
}

TEST_F(AppModelConversationsTest, MessageSavedWhileStreamingComesBackAsItWas)
{
    const QUuid id =
        savedConversation(u"Trip"_s, {message(Role::user, u"hi"_s), message(Role::assistant, {}, true)});
    settings->setValue(u"currentConversationID"_s, uuidText(id));
    start();
    ASSERT_EQ(model->currentConversationID(), id);
    EXPECT_TRUE(lastMessage().isStreaming);
    EXPECT_EQ(lastMessage().displayText(), u"Thinking…"_s);
}

TEST_F(AppModelConversationsTest, LeavingTheWindowSavesARunningRequest)
{
    neverAnswer();
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    settle();
    model->saveCurrentConversation();
    const auto file = runTask(scheduler, store->load(*model->currentConversationID()));
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->messages.last().isStreaming);
}

Task<ToolResult> resultOf(OneShot<ToolResult> result)
{
    co_return co_await result.wait();
}

/// What stands in the activity log, waits for an approval and runs, when the conversation is left.
class LeavingARunTest : public SavedConversations {
protected:
    void waitForApproval()
    {
        service.willTurn(Service::calls({toolCall(u"edit_file"_s)}, u"I will edit."_s));
        service.willTurn(Service::answer(u"never said"_s));
        ASSERT_TRUE(model->send(u"edit"_s, {}));
        ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
        ASSERT_FALSE(model->activity().steps().isEmpty());
    }
    void expectAllEnded()
    {
        EXPECT_TRUE(model->activity().steps().isEmpty());
        EXPECT_FALSE(model->gate().pendingToolCall().has_value());
        EXPECT_FALSE(model->isBusy());
        settle();
        EXPECT_TRUE(model->activity().steps().isEmpty()) << "nor does it end among another's steps";
        EXPECT_TRUE(executed.isEmpty());
        EXPECT_EQ(service.requests().size(), 1);
        EXPECT_TRUE(notifications.notified.isEmpty());
    }
};

TEST_F(LeavingARunTest, ANewConversationEndsIt)
{
    waitForApproval();
    model->newConversation();
    expectAllEnded();
    EXPECT_TRUE(model->messages().isEmpty());
}

TEST_F(LeavingARunTest, WhatAToolOrAQuestionComesToWhenTheConversationHasBeenLeftIsNoStepOfTheNext)
{
    const OneShot<ToolResult> toolEnd;
    tool = [this, toolEnd](ToolPermit permit) {
        executed.append(permit.call().name);
        return resultOf(toolEnd);
    };
    service.willTurn(Service::calls({toolCall(u"read_file"_s)}));
    ASSERT_TRUE(model->send(u"read"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return executed.size() == 1; }));
    model->newConversation();
    OneShot(toolEnd).resume(ToolResult(u"tool result"_s));
    settle();
    EXPECT_TRUE(model->activity().steps().isEmpty());
    service.willTurn(Service::calls({toolCall(u"ask_user"_s)}));
    ASSERT_TRUE(model->send(u"ask"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    model->newConversation();
    settle();
    EXPECT_TRUE(model->activity().steps().isEmpty());
}

TEST_F(LeavingARunTest, DeletingTheConversationEndsIt)
{
    waitForApproval();
    model->saveCurrentConversation();
    model->deleteConversation(*model->currentConversationID());
    expectAllEnded();
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_TRUE(listed().isEmpty());
}

TEST_F(LeavingARunTest, AMessageThatWaitsForAKeyIsSaved)
{
    const QUuid other = savedConversation(u"Trip"_s, {message(Role::user, u"x"_s)});
    settings->setProviderID(ProviderID::groq);
    ASSERT_TRUE(model->send(u"hello"_s, {}));
    ASSERT_FALSE(model->isBusy());
    model->openConversation(other);
    settle();
    ASSERT_EQ(listed().size(), 2);
    EXPECT_EQ(storedTexts(listed().first().id), QStringList({u"hello"_s, QString()}));
}

TEST_F(LeavingARunTest, WhatItStillSaysStaysOutOfTheNextConversation)
{
    Service::Turn streamed = Service::answer(QString(300, u'x'));
    Service::Turn atOnce;
    atOnce.result.text = u"too late"_s;
    for (Service::Turn turn : {streamed, Service::answer(u"too late"_s), atOnce}) {
        turn.atStart = [this] {
            model->newConversation();
            EXPECT_TRUE(model->send(u"next"_s, {}));
        };
        service.willTurn(turn);
        service.willTurn(Service::answer(u"hello"_s));
        sendAndFinish(u"go"_s);
        ASSERT_EQ(model->messages().size(), 2);
        EXPECT_EQ(lastMessage().text, u"hello"_s);
        model->newConversation();
    }
}

TEST_F(LeavingARunTest, ItsNoteAboutTheStepsStaysOutOfTheNextConversation)
{
    settings->setUnlimitedSteps(false);
    settings->setMaxSteps(1);
    const QUuid other =
        savedConversation(u"Trip"_s, {message(Role::user, u"x"_s), message(Role::assistant, u"y"_s)});
    service.willTurn(Service::calls({toolCall(u"ask_user"_s, R"({"question":"Sure?"})")}));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->questions().pendingQuestion().has_value(); }));
    model->cancel();
    model->openConversation(other);
    settle();
    model->questions().resolveQuestion(u"yes"_s);
    settle();
    EXPECT_EQ(lastMessage().text, u"y"_s);
    EXPECT_EQ(storedTexts(other), QStringList({u"x"_s, u"y"_s}));
}

TEST_F(LeavingARunTest, ItsNoteAboutRepetitionStaysOutOfTheNextConversation)
{
    const QUuid other =
        savedConversation(u"Trip"_s, {message(Role::user, u"x"_s), message(Role::assistant, u"y"_s)});
    const AIToolCall question = toolCall(u"ask_user"_s, R"({"question":"Sure?"})");
    service.willTurn(Service::calls({question, question, question}));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    const auto isAsked = [this] { return model->questions().pendingQuestion().has_value(); };
    ASSERT_TRUE(waitUntil(isAsked));
    model->cancel();
    model->openConversation(other);
    settle();
    model->questions().resolveQuestion(u"yes"_s);
    ASSERT_TRUE(waitUntil(isAsked));
    model->questions().resolveQuestion(u"yes"_s);
    settle();
    EXPECT_EQ(lastMessage().text, u"y"_s);
    EXPECT_EQ(storedTexts(other), QStringList({u"x"_s, u"y"_s}));
}

TEST_F(LeavingARunTest, OpeningAnotherIsRefusedUntilItIsCancelledAndThenEndsIt)
{
    const QUuid other = savedConversation(u"Trip"_s, {message(Role::user, u"x"_s)});
    const OneShot<ToolResult> toolEnd;
    tool = [this, toolEnd](ToolPermit permit) {
        executed.append(permit.call().name);
        return resultOf(toolEnd);
    };
    service.willTurn(Service::calls({toolCall(u"read_file"_s), toolCall(u"edit_file"_s)}));
    ASSERT_TRUE(model->send(u"edit"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return executed.size() == 1; }));
    model->openConversation(other);
    EXPECT_NE(model->currentConversationID(), other);
    // The work of a cancelled run goes on until it notices, and asks once more.
    model->cancel();
    OneShot(toolEnd).resume(ToolResult(u"tool result"_s));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->openConversation(other);
    EXPECT_EQ(model->currentConversationID(), other);
    EXPECT_FALSE(model->gate().pendingToolCall().has_value());
    EXPECT_TRUE(model->activity().steps().isEmpty());
    settle();
    EXPECT_EQ(executed.size(), 1);
    EXPECT_EQ(service.requests().size(), 1);
    EXPECT_EQ(model->messages().size(), 1);
}

} // namespace
} // namespace morvane
