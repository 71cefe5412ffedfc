#include "SavedConversations.h"

#include "base/Uuid.h"
#include "support/UnheardReading.h"

using namespace Qt::StringLiterals;

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace morvane {
namespace {

using Service = FakeAIService;

const QString sessionKey = u"currentConversationID"_s;

/// What the user does while a conversation is being opened or restored. Two are saved, the first is open.
class OpeningTest : public SavedConversations {
protected:
    OpeningTest()
    {
        first = savedConversation(u"First"_s, {message(Role::user, u"one"_s)});
        second = savedConversation(u"Second"_s, {message(Role::user, u"two"_s)});
        settings->setValue(sessionKey, uuidText(first));
        start();
        EXPECT_EQ(model->currentConversationID(), first);
        announcer.spoken.clear();
    }
    ~OpeningTest() override { scheduler.shutdown(std::chrono::seconds(5)); }

    /// A start of the program that has not read anything yet.
    void beginStart() { model = std::make_unique<AppModel>(*services); }

    QStringList shownTexts() const
    {
        QStringList texts;
        for (const ChatMessage &message : model->messages())
            texts.append(message.text);
        return texts;
    }

    QUuid first;
    QUuid second;
};

TEST_F(OpeningTest, AConversationIsTheCurrentOneFromTheMomentItIsAskedFor)
{
    model->activity().log(u"Old"_s, ActivityStep::Kind::info);
    model->openConversation(second);
    EXPECT_EQ(model->currentConversationID(), second);
    EXPECT_EQ(model->currentTitle(), u"Second"_s);
    EXPECT_EQ(settings->value(sessionKey).toString(), uuidText(second));
    EXPECT_TRUE(model->activity().steps().isEmpty());
    EXPECT_FALSE(model->isReady());
    settle();
    EXPECT_TRUE(model->isReady());
    EXPECT_THAT(shownTexts(), ElementsAre(u"two"));
}

TEST_F(OpeningTest, AFileThatArrivesLateIsDropped)
{
    model->openConversation(second);
    const QUuid third = savedConversation(u"Third"_s, {message(Role::user, u"three"_s)});
    model->openConversation(third);
    settle();
    EXPECT_EQ(model->currentConversationID(), third);
    EXPECT_THAT(shownTexts(), ElementsAre(u"three"));
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Opened the conversation."));
    model->openConversation(first);
    model->openConversation(second);
    model->openConversation(first);
    settle();
    EXPECT_THAT(shownTexts(), ElementsAre(u"one"));
    EXPECT_THAT(announcer.spoken, Not(Contains(u"Opened Second."_s)));
}

TEST_F(OpeningTest, AMessageIsRefusedUntilItsConversationIsThere)
{
    model->openConversation(second);
    EXPECT_FALSE(model->send(u"hello"_s, {}));
    settle();
    EXPECT_THAT(shownTexts(), ElementsAre(u"two"));
    EXPECT_TRUE(service.requests().isEmpty());
    EXPECT_EQ(storedTexts(first), QStringList{u"one"_s});
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"hello"_s);
    EXPECT_EQ(storedTexts(second), QStringList({u"two"_s, u"hello"_s, u"ok"_s}));
    EXPECT_EQ(service.requests().value(0).context.size(), 2);
}

TEST_F(OpeningTest, AMessageIsRefusedUntilTheLastConversationIsRestored)
{
    beginStart();
    EXPECT_FALSE(model->send(u"hello"_s, {}));
    settle();
    service.willTurn(Service::answer(u"ok"_s));
    sendAndFinish(u"hello"_s);
    EXPECT_EQ(storedTexts(first), QStringList({u"one"_s, u"hello"_s, u"ok"_s}));
    EXPECT_EQ(service.requests().value(0).context.size(), 2);
}

TEST_F(OpeningTest, NothingIsSavedBeforeTheMessagesAreThere)
{
    model->openConversation(second);
    model->saveCurrentConversation();
    model->cancel();
    settle();
    EXPECT_EQ(storedTexts(first), QStringList{u"one"_s});
    EXPECT_EQ(storedTexts(second), QStringList{u"two"_s});
}

TEST_F(OpeningTest, CancellingSaysNothingOfTheConversationBefore)
{
    const QUuid third = savedConversation(u"Third"_s, {message(Role::assistant, u"half"_s, true)});
    model->openConversation(third);
    settle();
    announcer.spoken.clear();
    model->openConversation(second);
    model->cancel();
    EXPECT_TRUE(announcer.spoken.isEmpty());
    EXPECT_EQ(model->status().statusText(), u"Ready"_s);
    settle();
    EXPECT_THAT(shownTexts(), ElementsAre(u"two"));
}

TEST_F(OpeningTest, DeletingWhatIsBeingOpenedDeletesIt)
{
    model->openConversation(second);
    actOnUnheardReading(scheduler, *store, [this] { model->deleteConversation(second); });
    EXPECT_FALSE(model->currentConversationID().has_value());
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_FALSE(settings->value(sessionKey).isValid());
    // On a quick disk it may have been opened before.
    EXPECT_THAT(announcer.spoken, AnyOf(ElementsAre(u"Conversation deleted."),
                                        ElementsAre(u"Opened Second.", u"Conversation deleted.")));
    EXPECT_FALSE(storedTexts(second).has_value());
    EXPECT_EQ(storedTexts(first), QStringList{u"one"_s});
    ASSERT_EQ(model->conversations().list().size(), 1);
    EXPECT_EQ(model->conversations().list().first().id, first);
}

TEST_F(OpeningTest, DeletingTheOneBeforeLeavesTheOpeningAlone)
{
    model->openConversation(second);
    model->deleteConversation(first);
    settle();
    EXPECT_EQ(model->currentConversationID(), second);
    EXPECT_THAT(shownTexts(), ElementsAre(u"two"));
    EXPECT_FALSE(storedTexts(first).has_value());
}

TEST_F(OpeningTest, WhatWasDeletedStaysSoWhenItIsOpenedAgain)
{
    model->openConversation(second);
    actOnUnheardReading(scheduler, *store, [this] {
        model->deleteConversation(second);
        model->openConversation(second);
    });
    settle();
    EXPECT_TRUE(model->messages().isEmpty());
    model->saveCurrentConversation();
    model->newConversation();
    settle();
    EXPECT_FALSE(storedTexts(second).has_value());
    EXPECT_EQ(model->conversations().list().size(), 1);
}

TEST_F(OpeningTest, WhatIsDeletedBeforeItIsRestoredDoesNotComeBack)
{
    beginStart();
    finishReadingUnheard(*store);
    model->deleteConversation(first);
    settle();
    EXPECT_FALSE(model->currentConversationID().has_value());
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_FALSE(settings->value(sessionKey).isValid());
    EXPECT_EQ(model->conversations().list().size(), 1);
    EXPECT_FALSE(storedTexts(first).has_value());
}

TEST_F(OpeningTest, AnotherThatIsDeletedDuringTheRestoreDoesNotComeBack)
{
    beginStart();
    finishReadingUnheard(*store);
    model->deleteConversation(second);
    settle();
    EXPECT_EQ(model->currentConversationID(), first);
    EXPECT_EQ(model->conversations().list().size(), 1);
}

TEST_F(OpeningTest, OpeningDuringTheRestoreTakesItsPlace)
{
    beginStart();
    finishReadingUnheard(*store);
    model->openConversation(second);
    settle();
    EXPECT_EQ(model->currentConversationID(), second);
    EXPECT_EQ(model->currentTitle(), u"Second"_s);
    EXPECT_THAT(shownTexts(), ElementsAre(u"two"));
    EXPECT_EQ(model->conversations().list().size(), 2);
    EXPECT_THAT(announcer.spoken, ElementsAre(u"Opened Second."));
}

TEST_F(OpeningTest, OpeningWhatIsBeingRestoredDoesNothing)
{
    beginStart();
    model->openConversation(first);
    settle();
    EXPECT_THAT(shownTexts(), ElementsAre(u"one"));
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

TEST_F(OpeningTest, ANewConversationDuringTheRestoreStaysNew)
{
    beginStart();
    model->newConversation();
    settle();
    EXPECT_FALSE(model->currentConversationID().has_value());
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(model->conversations().list().size(), 2);
}

TEST_F(OpeningTest, ANewConversationStaysNewWhenTheRestoredFileIsReadAlready)
{
    beginStart();
    finishReadingUnheard(*store); // the list
    finishReadingUnheard(*store);
    model->newConversation();
    settle();
    EXPECT_FALSE(model->currentConversationID().has_value());
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_TRUE(model->isReady());
    EXPECT_EQ(storedTexts(first), QStringList{u"one"_s});
}

TEST_F(OpeningTest, ANewConversationDuringTheOpeningStaysNew)
{
    model->openConversation(second);
    model->newConversation();
    settle();
    EXPECT_FALSE(model->currentConversationID().has_value());
    EXPECT_TRUE(model->messages().isEmpty());
    EXPECT_EQ(storedTexts(second), QStringList{u"two"_s});
    EXPECT_THAT(announcer.spoken, Not(Contains(u"Opened Second."_s)));
}

TEST_F(OpeningTest, ATitleThatIsFoundDuringTheOpeningIsSavedWithTheMessages)
{
    model->openConversation(second);
    EXPECT_TRUE(model->conversations().rename(second, u"Better"_s));
    EXPECT_FALSE(model->conversations().rename(first, u"Never"_s));
    settle();
    EXPECT_EQ(model->currentTitle(), u"Better"_s);
    const auto file = runTask(scheduler, store->load(second));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->title, u"Better"_s);
    EXPECT_EQ(file->messages.size(), 1);
}

} // namespace
} // namespace morvane
