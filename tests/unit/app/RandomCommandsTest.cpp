#include "MoodyModel.h"
#include "SavedConversations.h"

#include "async/OneShot.h"
#include "base/Uuid.h"
#include "support/HeldPool.h"
#include "support/UnheardReading.h"

using namespace Qt::StringLiterals;

using namespace std::chrono_literals;

namespace morvane {
namespace {

/// A conversation as the user knows it.
struct Known {
    std::optional<QUuid> id; ///< Nothing before the first save.
    QStringList sent;
    bool deleted = false;
};
using KnownPointer = std::shared_ptr<Known>;

Task<ToolResult> resultOf(OneShot<ToolResult> result)
{
    co_return co_await result.wait();
}

/// A user who does anything at any time, and what must hold whatever they do.
class RandomCommandsTest : public SavedConversations, public testing::WithParamInterface<unsigned> {
protected:
    RandomCommandsTest()
    {
        for (const QString &text : {u"<1>"_s, u"<2>"_s, u"<3>"_s}) {
            known.append(std::make_shared<Known>(
                Known{savedConversation(u"Title "_s + text, {message(Role::user, text)}), {text}}));
        }
        settings->setUnlimitedSteps(true);
        settings->setValue(u"currentConversationID"_s, uuidText(*known.first()->id));
        current = known.first();
        tool = [this](ToolPermit) {
            OneShot<ToolResult> end;
            if (dice.oneIn(2))
                end.resume(ToolResult(u"done"_s));
            else
                tools.append(end);
            return resultOf(end);
        };
        moodyServices.reset(new AppServices(servicesAround({.scheduler = scheduler,
                                                            .settings = *settings,
                                                            .conversations = *store,
                                                            .executeTool = services->executeTool,
                                                            .machine = u"Test machine."_s,
                                                            .service = &moody})));
        model = std::make_unique<AppModel>(*moodyServices);
        QObject::connect(&model->conversations(), &Conversations::currentChanged, model.get(), [this] {
            if (!current->id && !current->sent.isEmpty())
                current->id = model->currentConversationID();
        });
    }
    ~RandomCommandsTest() override { scheduler.shutdown(0ms); }

    void send()
    {
        const QString text = u"<%1>"_s.arg(++lastNumber);
        // Before the message, so that the signal of a first save finds it.
        const KnownPointer conversation = current;
        conversation->sent.append(text);
        const bool mayTake = model->isReady() && !model->isBusy() && !model->isInstallPending();
        const bool taken = model->send(text, {});
        EXPECT_EQ(taken, mayTake);
        if (!taken) {
            conversation->sent.removeLast();
            return;
        }
        conversation->deleted = false;
        if (!known.contains(conversation))
            known.append(conversation);
    }

    void open(const KnownPointer &wanted)
    {
        if (!wanted->id)
            return;
        model->openConversation(*wanted->id);
        if (model->currentConversationID() == wanted->id)
            current = wanted;
    }

    void remove(const KnownPointer &unwanted)
    {
        if (!unwanted->id)
            return;
        model->deleteConversation(*unwanted->id);
        unwanted->deleted = true;
        unwanted->sent.clear();
        if (current == unwanted)
            current = std::make_shared<Known>();
    }

    void begin()
    {
        model->newConversation();
        current = std::make_shared<Known>();
    }

    void changeProvider()
    {
        static const QList<ProviderID> providers{ProviderID::custom, ProviderID::ollama, ProviderID::groq};
        localModel.installationTime = std::chrono::seconds(dice.roll(5));
        localModel.failure = dice.oneIn(3) ? u"no room"_s : QString();
        if (dice.oneIn(3)) {
            localModel.serverRunning = false;
            localModel.models.clear();
        }
        settings->setProviderID(providers.at(dice.roll(providers.size())));
    }

    void endATool()
    {
        if (!tools.isEmpty())
            tools.takeAt(dice.roll(tools.size())).resume(ToolResult(u"done"_s));
    }

    void command()
    {
        const KnownPointer any = known.at(dice.roll(known.size()));
        switch (dice.roll(24)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
            return send();
        case 5:
        case 6:
            return model->cancel();
        case 7:
            return begin();
        case 8:
        case 9:
        case 10:
            return open(any);
        case 11:
            return remove(any);
        case 12:
            return remove(current);
        case 13:
        case 14:
            return model->gate().resolvePermission(dice.oneIn(2), dice.oneIn(4));
        case 15:
        case 16:
            return model->questions().resolveQuestion(u"yes"_s);
        case 17:
            return endATool();
        case 18:
            return changeProvider();
        case 19:
            return model->saveCurrentConversation();
        case 20:
            return dice.oneIn(2) ? model->localModel().refreshLocalModel() : model->cancelLocalModelWork();
        case 21:
        case 22:
            return static_cast<void>(busyThreads.emplace());
        default:
            return clock.advance(std::chrono::seconds(dice.roll(20)));
        }
    }

    /// Lets the program come as far as it may have come when the user does the next thing.
    void pause()
    {
        switch (dice.roll(5)) {
        case 0:
            return;
        case 1:
            return QCoreApplication::processEvents();
        case 2:
            return finishReadingUnheard(*store);
        case 3:
            return static_cast<void>(morvane::settle());
        default:
            busyThreads.reset();
            return settle();
        }
    }

    bool isWaiting() const
    {
        return model->isBusy() || model->isInstallPending() || !model->isReady() ||
               model->gate().pendingToolCall() || model->questions().pendingQuestion() || !tools.isEmpty();
    }

    /// Answers everything and gives everything the time that it needs.
    void comeToRest()
    {
        busyThreads.reset();
        settle();
        for (int round = 0; round < 300 && isWaiting(); ++round) {
            model->gate().resolvePermission(false, false);
            model->questions().resolveQuestion(u"no"_s);
            endATool();
            clock.advance(round % 3 == 0 ? 121s : 11s);
            settle();
        }
        ASSERT_FALSE(isWaiting());
    }

    /// Nothing was lost, misdirected or brought back.
    void expectAllWhereItBelongs()
    {
        expectShown();
        model->saveCurrentConversation();
        settle();
        QSet<QUuid> expected;
        for (const KnownPointer &conversation : std::as_const(known)) {
            if (conversation->deleted) {
                EXPECT_FALSE(runTask(scheduler, store->load(*conversation->id)));
                continue;
            }
            ASSERT_TRUE(conversation->id);
            expected.insert(*conversation->id);
            const auto file = runTask(scheduler, store->load(*conversation->id));
            ASSERT_TRUE(file);
            expectOwn(file->messages, conversation->sent);
            EXPECT_TRUE(file->title == conversation->sent.first() ||
                        conversation->sent.first() == file->title.mid(u"Title "_s.size()))
                << file->title.toStdString();
        }
        QSet<QUuid> listedByModel;
        for (const ConversationMeta &meta : model->conversations().list())
            listedByModel.insert(meta.id);
        EXPECT_EQ(listedByModel, expected);
        EXPECT_EQ(listed().size(), expected.size());
    }

    /// What a start finds of what was sent.
    void expectMessagesOnDisk()
    {
        Scheduler next(clock);
        for (const KnownPointer &conversation : std::as_const(known)) {
            const auto file = conversation->id ? runTask(next, store->load(*conversation->id)) : std::nullopt;
            ASSERT_EQ(file.has_value(), !conversation->deleted);
            if (file)
                expectOwn(file->messages, conversation->sent);
        }
    }

    void expectShown()
    {
        EXPECT_EQ(model->currentConversationID(), current->id);
        if (model->isReady())
            expectOwn(model->messages(), current->sent);
    }

    /// The messages that were sent to the conversation, each once and in order, and no answer to another.
    static void expectOwn(const QList<ChatMessage> &messages, const QStringList &sent)
    {
        QStringList users;
        for (const ChatMessage &message : messages)
            if (message.role == Role::user)
                users.append(message.text);
            else if (!message.text.isEmpty())
                EXPECT_TRUE(sent.contains(u"<%1>"_s.arg(numberIn(message.text))))
                    << message.text.toStdString();
        EXPECT_EQ(users, sent);
    }

    Dice dice{GetParam()};
    MoodyModel moody{GetParam() + 1'000'000};
    std::unique_ptr<AppServices> moodyServices;
    QList<KnownPointer> known;
    KnownPointer current;
    QList<OneShot<ToolResult>> tools; ///< Those that run.
    int lastNumber = 3;
    std::optional<HeldPool> busyThreads; ///< While there, long calls are not looked at.
};

TEST_P(RandomCommandsTest, WhateverTheUserDoesEveryMessageIsWhereItBelongs)
{
    for (int left = 120; left > 0 && !HasFailure(); --left) {
        command();
        pause();
        if (model->isReady())
            expectShown();
        if (left % 40 == 1) {
            comeToRest();
            expectAllWhereItBelongs();
        }
    }
}

TEST_P(RandomCommandsTest, QuittingAtAnyTimeLosesNothing)
{
    for (int left = 10 + dice.roll(40); left > 0 && !HasFailure(); --left) {
        command();
        pause();
    }
    model->prepareToQuit();
    EXPECT_FALSE(model->gate().pendingToolCall());
    EXPECT_FALSE(model->questions().pendingQuestion());
    // A tool that goes on would use up any time.
    scheduler.shutdown(20ms);
    model.reset();
    expectMessagesOnDisk();
}

TEST_P(RandomCommandsTest, NoMessageThatWasTakenWaitsForAnythingToBeSaved)
{
    for (int left = 10 + dice.roll(40); left > 0 && !HasFailure(); --left) {
        command();
        pause();
    }
    // A crash ends the program here.
    expectMessagesOnDisk();
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCommandsTest, testing::Range(1U, 21U));

} // namespace
} // namespace morvane
