#include "app/Conversations.h"

#include "async/Scheduler.h"
#include "store/ConversationStore.h"
#include "store/SettingsStore.h"
#include "support/FakeClock.h"
#include "support/FakeKeychain.h"
#include "support/RunTask.h"
#include "support/TemporaryHome.h"
#include "support/UnheardReading.h"

#include <gtest/gtest.h>
#include <random>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The list as someone knows it who was only told of changes.
class Mirror {
public:
    explicit Mirror(const Conversations &conversations)
    {
        const auto inserted = [this, &conversations](qsizetype first, qsizetype last) {
            ++told;
            for (qsizetype row = first; row <= last; ++row)
                rows.insert(row, conversations.list().at(row));
        };
        const auto removed = [this](qsizetype first, qsizetype last) {
            ++told;
            rows.remove(first, last - first + 1);
        };
        const auto moved = [this](qsizetype from, qsizetype to) {
            ++told;
            rows.move(from, to);
        };
        const auto changed = [this, &conversations](qsizetype row) {
            ++told;
            rows[row] = conversations.list().at(row);
        };
        QObject::connect(&conversations, &Conversations::rowsInserted, &conversations, inserted);
        QObject::connect(&conversations, &Conversations::rowsRemoved, &conversations, removed);
        QObject::connect(&conversations, &Conversations::rowMoved, &conversations, moved);
        QObject::connect(&conversations, &Conversations::rowChanged, &conversations, changed);
    }

    QList<ConversationMeta> rows;
    int told = 0;
};

class ConversationsTest : public testing::Test {
protected:
    ~ConversationsTest() override { scheduler.shutdown(std::chrono::seconds(5)); }

    void readList()
    {
        conversations.reload();
        finishReading();
    }
    void finishReading()
    {
        for (bool atRest = false; !atRest;) {
            const bool idle = store.isIdle();
            atRest = !settle() && idle;
        }
    }
    QUuid save(QUuid id, const QString &title)
    {
        ChatMessage message;
        message.id = QUuid::createUuid();
        message.text = title;
        store.save(id, title, {message});
        return id;
    }

    TemporaryHome home;
    FakeClock clock;
    Scheduler scheduler{clock};
    FakeKeychain keychain;
    SettingsStore settings{home.path(u"Morvane.conf"_s), keychain};
    ConversationStore store{home.path(u"Conversations"_s)};
    Conversations conversations{scheduler, store, settings};
    Mirror mirror{conversations};
};

TEST_F(ConversationsTest, TheFirstListIsToldAtOnce)
{
    for (int number = 0; number < 20; ++number)
        save(QUuid::createUuid(), QString::number(number));
    readList();
    EXPECT_EQ(mirror.rows.size(), 20);
    EXPECT_EQ(mirror.told, 1);
}

TEST_F(ConversationsTest, AListThatIsTheSameTellsNothing)
{
    save(QUuid::createUuid(), u"a"_s);
    readList();
    mirror.told = 0;
    readList();
    EXPECT_EQ(mirror.told, 0);
}

TEST_F(ConversationsTest, ARowThatIsNewestAgainMovesToTheTop)
{
    const QUuid oldest = save(QUuid::createUuid(), u"a"_s);
    save(QUuid::createUuid(), u"b"_s);
    save(QUuid::createUuid(), u"c"_s);
    readList();
    ASSERT_EQ(mirror.rows.last().id, oldest);
    mirror.told = 0;
    save(oldest, u"a"_s);
    readList();
    EXPECT_EQ(mirror.rows.first().id, oldest);
    EXPECT_EQ(mirror.rows, conversations.list());
    EXPECT_EQ(mirror.told, 2); // moved, and its date changed
}

TEST_F(ConversationsTest, ASaveDuringAReadingIsNotLost)
{
    conversations.reload();
    actOnUnheardReading(scheduler, store, [this] {
        ChatMessage message;
        message.id = QUuid::createUuid();
        conversations.setProvisionalTitle(u"New"_s);
        conversations.save({message});
    });
    finishReading();
    ASSERT_EQ(mirror.rows.size(), 1);
    EXPECT_EQ(mirror.rows.first().title, u"New"_s);
}

TEST_F(ConversationsTest, TwoFilesWithOneIdentifierAreTwoRows)
{
    const QUuid id = save(QUuid::createUuid(), u"a"_s);
    runTask(scheduler, store.list());
    const QString folder = home.path(u"Conversations/"_s);
    const QString file = folder + id.toString(QUuid::WithoutBraces).toUpper() + u".json"_s;
    readList();
    ASSERT_TRUE(QFile::copy(file, folder + u"copy.json"_s));
    readList();
    EXPECT_EQ(mirror.rows.size(), 2);
    EXPECT_EQ(mirror.rows, conversations.list());
    ASSERT_TRUE(QFile::remove(folder + u"copy.json"_s));
    readList();
    EXPECT_EQ(mirror.rows.size(), 1);
    EXPECT_EQ(mirror.rows, conversations.list());
}

TEST_F(ConversationsTest, WhateverChangesTheRowsAreTold)
{
    std::mt19937 random(20);
    QList<QUuid> ids;
    for (int round = 0; round < 60; ++round) {
        for (int change = int(random() % 4); change >= 0; --change) {
            const unsigned kind = random() % 3;
            if (kind == 0 || ids.isEmpty())
                ids.append(save(QUuid::createUuid(), QString::number(round)));
            else if (kind == 1)
                save(ids.at(qsizetype(random() % ids.size())), QString::number(round));
            else
                store.remove(ids.takeAt(qsizetype(random() % ids.size())));
        }
        readList();
        ASSERT_EQ(conversations.list(), runTask(scheduler, store.list()));
        ASSERT_EQ(mirror.rows, conversations.list());
    }
}

} // namespace
} // namespace morvane
