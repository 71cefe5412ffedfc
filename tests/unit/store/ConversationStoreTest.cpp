#include "store/ConversationStore.h"

#include "base/ReferenceDate.h"
#include "base/Uuid.h"
#include "support/FakeClock.h"
#include "support/RunTask.h"
#include "support/SampleConversation.h"
#include "support/TemporaryHome.h"

#include <QDir>
#include <gtest/gtest.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ConversationStoreTest : public testing::Test {
protected:
    template <class T> T run(Task<T> task) { return runTask(scheduler, std::move(task)); }

    FakeClock clock;
    Scheduler scheduler{clock};
    TemporaryHome home;
    const QString folder = home.path("Morvane/Conversations");
    std::unique_ptr<ConversationStore> store = std::make_unique<ConversationStore>(folder);
    const QList<ChatMessage> messages = sampleConversation(3).messages;
};

TEST_F(ConversationStoreTest, FolderIsCreatedForTheUserAlone)
{
    EXPECT_TRUE(run(store->list()).isEmpty());
    EXPECT_EQ(permissionBits(folder), 0700U);
}

TEST_F(ConversationStoreTest, SaveAnswersAtOnceWhatTheListWillShow)
{
    const double before = referenceDateNow();
    const ConversationMeta meta = store->save(newUuid(), "Title", messages);
    EXPECT_EQ(meta.title, u"Title"_s);
    EXPECT_EQ(meta.messageCount, 3);
    EXPECT_GE(meta.updatedAt, before);
    EXPECT_LE(meta.updatedAt, referenceDateNow());
    EXPECT_EQ(run(store->list()), QList<ConversationMeta>{meta});
}

TEST_F(ConversationStoreTest, SaveAnswersUntitledForAnEmptyTitle)
{
    const QUuid id = newUuid();
    EXPECT_EQ(store->save(id, QString(), messages).title, u"Untitled"_s);
    EXPECT_EQ(run(store->load(id))->title, QString());
}

TEST_F(ConversationStoreTest, ListAndLoadSeeEverySaveAndRemovalBeforeThem)
{
    QList<QUuid> ids;
    for (int i = 0; i < 20; ++i) {
        ids.append(newUuid());
        store->save(ids.last(), QString::number(i), messages);
    }
    store->remove(ids.first());
    auto loaded = store->load(ids.last());
    auto listed = store->list();
    store->remove(ids.last());
    EXPECT_EQ(run(std::move(listed)).size(), 19);
    EXPECT_TRUE(run(std::move(loaded)).has_value());
    EXPECT_EQ(run(store->load(ids.last())), std::nullopt);
}

TEST_F(ConversationStoreTest, LastOfSeveralSavesWins)
{
    const QUuid id = newUuid();
    for (int i = 0; i < 10; ++i)
        store->save(id, QString::number(i), messages);
    EXPECT_EQ(run(store->load(id))->title, u"9"_s);
    EXPECT_EQ(run(store->list()).size(), 1);
}

TEST_F(ConversationStoreTest, SavingAgainKeepsTheCreationDate)
{
    const QUuid id = newUuid();
    const double first = store->save(id, "a", messages).updatedAt;
    const double second = store->save(id, "b", messages).updatedAt;
    const auto file = run(store->load(id));
    EXPECT_EQ(file->createdAt, first);
    EXPECT_EQ(file->updatedAt, second);
    EXPECT_GT(second, first);
}

TEST_F(ConversationStoreTest, MessagesThatChangeAfterTheCallAreSavedAsTheyWere)
{
    const QUuid id = newUuid();
    QList<ChatMessage> changing = messages;
    store->save(id, "T", changing);
    for (ChatMessage &message : changing)
        message.text = u"changed"_s;
    EXPECT_EQ(run(store->load(id))->messages, messages);
}

TEST_F(ConversationStoreTest, DestructorFinishesEveryWrite)
{
    QList<QUuid> ids;
    for (int i = 0; i < 30; ++i) {
        ids.append(newUuid());
        store->save(ids.last(), "T", messages);
    }
    store.reset();
    EXPECT_EQ(QDir(folder).entryList({"*.json"}).size(), 30);
}

TEST_F(ConversationStoreTest, AnswerArrivesAfterTheStoreIsGone)
{
    store->save(newUuid(), "T", messages);
    auto listed = store->list();
    store.reset();
    EXPECT_EQ(run(std::move(listed)).size(), 1);
}

TEST_F(ConversationStoreTest, AnswerThatNobodyWaitsForIsDropped)
{
    {
        const auto dropped = store->list();
    }
    EXPECT_TRUE(run(store->list()).isEmpty());
}

TEST_F(ConversationStoreTest, SaveAnswersAlsoWhenNothingCanBeWritten)
{
    home.write("file", "x");
    ConversationStore blocked(home.path("file/Conversations"));
    EXPECT_EQ(blocked.save(newUuid(), "T", messages).messageCount, 3);
    EXPECT_TRUE(run(blocked.list()).isEmpty());
}

} // namespace
} // namespace morvane
