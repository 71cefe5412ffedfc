#include "support/AppFixture.h"

#include "base/Uuid.h"

using testing::Contains;

namespace morvane {
namespace {

using Service = FakeAIService;

class AppModelConversationsTest : public AppFixture {
protected:
    QUuid savedConversation(const QString &title, QList<ChatMessage> messages)
    {
        const QUuid id = QUuid::createUuid();
        store->save(id, title, std::move(messages));
        return id;
    }

    ChatMessage message(Role role, const QString &text, bool streaming = false) const
    {
        ChatMessage result;
        result.id = QUuid::createUuid();
        result.role = role;
        result.text = text;
        result.isStreaming = streaming;
        return result;
    }
};

TEST_F(AppModelConversationsTest, UnusedNewConversationLeavesNoTrace)
{
    model->newConversation();
    settle();
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("New conversation started.")));
}

TEST_F(AppModelConversationsTest, NewConversationSavesTheOldOne)
{
    neverAnswer();
    ASSERT_TRUE(model->send(QStringLiteral("hi"), {}));
    settle();
    model->newConversation();
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_TRUE(model->context().isEmpty());
    EXPECT_FALSE(model->isBusy());
    EXPECT_EQ(model->status().statusText(), QStringLiteral("Ready"));
    EXPECT_FALSE(settings->value(QStringLiteral("currentConversationID")).isValid());
    EXPECT_EQ(listed().size(), 1);
}

TEST_F(AppModelConversationsTest, OpeningTheOpenConversationDoesNothing)
{
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("hi"));
    announcer.spoken.clear();
    model->openConversation(*model->currentConversationID());
    settle();
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(AppModelConversationsTest, OpeningAConversationRebuildsItsContext)
{
    const QUuid id =
        savedConversation(QStringLiteral("Trip"), {message(Role::user, QStringLiteral(" Where? ")),
                                                   message(Role::assistant, QStringLiteral("There.")),
                                                   message(Role::assistant, QStringLiteral("  "))});
    start();
    model->openConversation(id);
    ASSERT_TRUE(waitUntil([&] { return model->currentConversationID() == id; }));
    EXPECT_EQ(model->messages().size(), 3);
    EXPECT_EQ(model->context().size(), 2);
    EXPECT_EQ(model->currentTitle(), QStringLiteral("Trip"));
    EXPECT_EQ(settings->value(QStringLiteral("currentConversationID")).toString(), uuidText(id));
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Opened Trip.")));
}

TEST_F(AppModelConversationsTest, OpeningIsRefusedWhileBusy)
{
    const QUuid id = savedConversation(QStringLiteral("Trip"), {message(Role::user, QStringLiteral("x"))});
    neverAnswer();
    ASSERT_TRUE(model->send(QStringLiteral("hi"), {}));
    model->openConversation(id);
    settle();
    EXPECT_NE(model->currentConversationID(), id);
}

TEST_F(AppModelConversationsTest, UnreadableConversationOpensEmpty)
{
    const QUuid id = QUuid::createUuid();
    model->openConversation(id);
    ASSERT_TRUE(waitUntil([&] { return model->currentConversationID() == id; }));
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Opened the conversation.")));
}

TEST_F(AppModelConversationsTest, DeletingAnotherConversationLeavesTheOpenOneAlone)
{
    const QUuid other = savedConversation(QStringLiteral("Old"), {message(Role::user, QStringLiteral("x"))});
    start();
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("hi"));
    model->deleteConversation(other);
    settle();
    EXPECT_EQ(model->messages().size(), 2);
    EXPECT_THAT(announcer.spoken, Contains(QStringLiteral("Conversation deleted.")));
    EXPECT_EQ(listed().size(), 1);
}

TEST_F(AppModelConversationsTest, DeletingTheOpenConversationDoesNotBringItBack)
{
    neverAnswer();
    ASSERT_TRUE(model->send(QStringLiteral("hi"), {}));
    settle();
    model->saveCurrentConversation();
    model->deleteConversation(*model->currentConversationID());
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_FALSE(model->currentConversationID().has_value());
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_TRUE(model->conversations().isEmpty());
}

TEST_F(AppModelConversationsTest, StartRestoresTheLastConversation)
{
    service.willTurn(Service::answer(QStringLiteral("ok")));
    sendAndFinish(QStringLiteral("hi"));
    const QUuid id = *model->currentConversationID();
    start();
    EXPECT_EQ(model->currentConversationID(), id);
    EXPECT_EQ(model->messages().size(), 2);
    EXPECT_EQ(model->context().size(), 2);
    EXPECT_EQ(model->conversations().size(), 1);
}

TEST_F(AppModelConversationsTest, KeyOfAVanishedConversationIsIgnoredAndStays)
{
    const QString gone = uuidText(QUuid::createUuid());
    settings->setValue(QStringLiteral("currentConversationID"), gone);
    start();
    EXPECT_FALSE(model->currentConversationID().has_value());
    EXPECT_EQ(settings->value(QStringLiteral("currentConversationID")).toString(), gone);
    settings->setValue(QStringLiteral("currentConversationID"), QStringLiteral("no id"));
    start();
    EXPECT_FALSE(model->currentConversationID().has_value());
}

TEST_F(AppModelConversationsTest, MessageSavedWhileStreamingComesBackAsItWas)
{
    const QUuid id = savedConversation(QStringLiteral("Trip"), {message(Role::user, QStringLiteral("hi")),
                                                                message(Role::assistant, {}, true)});
    settings->setValue(QStringLiteral("currentConversationID"), uuidText(id));
    start();
    ASSERT_EQ(model->currentConversationID(), id);
    EXPECT_TRUE(lastMessage().isStreaming);
    EXPECT_EQ(lastMessage().displayText(), QStringLiteral("Thinking…"));
}

TEST_F(AppModelConversationsTest, LeavingTheWindowSavesARunningRequest)
{
    neverAnswer();
    ASSERT_TRUE(model->send(QStringLiteral("hi"), {}));
    settle();
    model->saveCurrentConversation();
    const auto file = runTask(scheduler, store->load(*model->currentConversationID()));
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->messages.last().isStreaming);
}

} // namespace
} // namespace morvane
