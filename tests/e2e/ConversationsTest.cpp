#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

const auto titled = u"Conversation summarized as: Scripted title."_s;
const auto started = u"New conversation started."_s;

class ConversationsTest : public MorvaneTest {
protected:
    MorvaneSession &startWithAnswers()
    {
        return start({ScriptedTurn::saying({"Answer one."}), ScriptedTurn::saying({"Answer two."})});
    }

    /// Asks, and waits for the whole of the request's end.
    void ask(MorvaneSession &morvane, const QString &question)
    {
        morvane.ear().forget();
        morvane.send(question);
        ASSERT_TRUE(morvane.ear().hears(titled));
    }

    /// Two conversations, the first question in the older; the newer is open. Both are on disk.
    MorvaneSession &startWithTwoConversations()
    {
        MorvaneSession &morvane =
            start({ScriptedTurn::saying({"Answer one."}), ScriptedTurn::saying({"Answer two."}),
                   ScriptedTurn::saying({"Answer three."})});
        ask(morvane, u"First question"_s);
        morvane.keyboard().press(u"Ctrl+N"_s);
        EXPECT_TRUE(morvane.ear().hears(started));
        ask(morvane, u"Second question"_s);
        EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer two."_s));
        EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, u"Answer one."_s));
        EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, u"Answer two."_s));
        return morvane;
    }

    /// The rows of the list from the top, as soon as there are so many.
    static QList<AccessibleElement> rows(MorvaneSession &morvane, qsizetype count)
    {
        QList<AccessibleElement> entries;
        EXPECT_TRUE(waitUntil([&] {
            entries.clear();
            morvane.program().tree().visit([&](const AccessibleNode &node) {
                if (begins(u"Open Scripted title, updated "_s)(node))
                    entries.append(node.element);
            });
            return entries.size() == count;
        }));
        return entries;
    }

    /// Tab goes round to the list, whose rows the arrow keys reach. Gives how many stops away it was.
    static int goToLastRow(MorvaneSession &morvane)
    {
        int stops = 0;
        auto focused = morvane.program().focused();
        for (int stop = 0; stop < 20 && focused && !focused->name.startsWith("Open "_L1); ++stop) {
            const QString before = focused->element.path();
            morvane.keyboard().press(u"Tab"_s);
            ++stops;
            EXPECT_TRUE(waitUntil([&] {
                focused = morvane.program().focused();
                return focused && focused->element.path() != before;
            }));
        }
        EXPECT_TRUE(focused && focused->name.startsWith("Open "_L1));
        morvane.keyboard().press(u"End"_s);
        return stops;
    }

    /// The stored conversation that begins with `question`, as JSON text; empty if there is none.
    static QByteArray stored(MorvaneSession &morvane, const QString &question)
    {
        for (const QJsonObject &file : morvane.storedConversations()) {
            const QJsonArray messages = file.value("messages"_L1).toArray();
            if (messages.first().toObject().value("text"_L1) == question)
                return QJsonDocument(messages).toJson();
        }
        return {};
    }

    static AccessibleProgram::Condition begins(const QString &start)
    {
        return [start](const AccessibleNode &node) {
            return node.has(AccessibleState::showing) && node.name.startsWith(start);
        };
    }
};

TEST_F(ConversationsTest, ControlNBeginsANewConversation)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, u"First question"_s);
    morvane.keyboard().press(u"Ctrl+N"_s);
    EXPECT_TRUE(morvane.ear().hears(started));
    EXPECT_TRUE(morvane.program().hides(u"Morvane said Answer one."_s));
    EXPECT_TRUE(morvane.program().shows(u"Try asking: What can you do?"_s));
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, u"Answer one."_s));
    EXPECT_EQ(morvane.storedConversations().size(), 1);
}

TEST_F(ConversationsTest, AnotherConversationIsOpenedFromTheList)
{
    MorvaneSession &morvane = startWithTwoConversations();
    // The newest conversation stands first, so the other is the last of the list.
    const QString older = rows(morvane, 2).last().name();
    EXPECT_TRUE(older.endsWith(", 2 messages"_L1)) << older.toStdString();
    goToLastRow(morvane);
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Opened Scripted title."_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer one."_s));
    EXPECT_TRUE(morvane.program().hides(u"Morvane said Answer two."_s));
}

TEST_F(ConversationsTest, ARowOffersToOpenItsConversation)
{
    MorvaneSession &morvane = startWithTwoConversations();
    const AccessibleElement older = rows(morvane, 2).last();
    EXPECT_THAT(older.actions(), testing::ElementsAre(u"Open"_s));
    older.act(u"Open"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Opened Scripted title."_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer one."_s));
}

TEST_F(ConversationsTest, AMessageSentRightAfterAChoiceGoesToWhatWasChosen)
{
    MorvaneSession &morvane = startWithTwoConversations();
    morvane.program().find(u"Message Morvane"_s).setText(u"Third question"_s);
    // All by keys, which arrive in their order.
    const int stops = goToLastRow(morvane);
    morvane.keyboard().press(u"Return"_s);
    for (int stop = 0; stop < stops; ++stop)
        morvane.keyboard().press(u"Shift+Tab"_s);
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(morvane.program().shows(u"You said Third question"_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer three."_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer one."_s));
    EXPECT_TRUE(waitUntil([&] { return stored(morvane, u"First question"_s).contains("Answer three."); }));
    EXPECT_FALSE(stored(morvane, u"Second question"_s).contains("Third question"));
    EXPECT_EQ(morvane.program().find(u"Message Morvane"_s).text(), QString());
}

TEST_F(ConversationsTest, ADeleteRightAfterAChoiceDeletesWhatWasChosen)
{
    MorvaneSession &morvane = startWithTwoConversations();
    goToLastRow(morvane);
    morvane.keyboard().press(u"Return"_s);
    morvane.keyboard().press(u"Delete"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Conversation deleted."_s));
    EXPECT_TRUE(waitUntil([&] { return morvane.storedConversations().size() == 1; }));
    EXPECT_TRUE(stored(morvane, u"Second question"_s).contains("Answer two."));
    EXPECT_EQ(rows(morvane, 1).size(), 1);
    EXPECT_TRUE(morvane.program().shows(u"Try asking: What can you do?"_s));
}

TEST_F(ConversationsTest, BackspaceDeletesNothing)
{
    MorvaneSession &morvane = startWithTwoConversations();
    goToLastRow(morvane);
    morvane.keyboard().press(u"BackSpace"_s);
    morvane.keyboard().press(u"BackSpace"_s);
    // Keys arrive in their order, so that what Delete does comes after what they did.
    morvane.keyboard().press(u"Delete"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Conversation deleted."_s));
    EXPECT_TRUE(waitUntil([&] { return morvane.storedConversations().size() == 1; }));
    EXPECT_TRUE(stored(morvane, u"Second question"_s).contains("Answer two."));
}

TEST_F(ConversationsTest, ADraftIsNotKeptBeyondTheEnd)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, u"First question"_s);
    morvane.program().find(u"Message Morvane"_s).setText(u"A secret draft"_s);
    ASSERT_TRUE(waitUntil(
        [&] { return morvane.program().find(u"Message Morvane"_s).text() == u"A secret draft"_s; }));
    morvane.quit();
    QDirIterator files(morvane.home(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly))
            EXPECT_FALSE(file.readAll().contains("secret draft")) << file.fileName().toStdString();
    }
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer one."_s));
    EXPECT_EQ(morvane.program().find(u"Message Morvane"_s).text(), QString());
}

TEST_F(ConversationsTest, ADeletedConversationIsGoneFromListAndDisk)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, u"First question"_s);
    ASSERT_TRUE(waitUntil([&] { return morvane.storedConversations().size() == 1; }));
    morvane.program().find(u"Delete Scripted title"_s).press();
    EXPECT_TRUE(morvane.ear().hears(u"Conversation deleted."_s));
    EXPECT_TRUE(waitUntil([&] { return morvane.storedConversations().isEmpty(); }));
    EXPECT_TRUE(morvane.program().hides(u"Morvane said Answer one."_s));
    EXPECT_TRUE(morvane.program().shows(u"No saved conversations yet. They are saved automatically."_s));
}

TEST_F(ConversationsTest, TheLastConversationIsOpenAgainAfterARestart)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, u"First question"_s);
    morvane.quit();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer one."_s));
    ask(morvane, u"Second question"_s);
    EXPECT_TRUE(morvane.storesLastMessage(u"text"_s, u"Answer two."_s));
    EXPECT_EQ(morvane.storedConversations().size(), 1);
}

TEST_F(ConversationsTest, AKilledProgramLosesNoFinishedRequest)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, u"First question"_s);
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, u"Answer one."_s));
    morvane.program().process().kill();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer one."_s));
}

TEST_F(ConversationsTest, AKilledProgramKeepsAMessageThatWasNotAnsweredYet)
{
    ScriptedTurn stalling;
    stalling.steps = {step::Text{"An answer that"}, step::Stall{}};
    MorvaneSession &morvane = start({stalling});
    morvane.send(u"First question"_s);
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, u"First question"_s));
    morvane.program().process().kill();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"You said First question"_s));
    EXPECT_TRUE(morvane.program().hides(u"Morvane is responding"_s));
}

TEST_F(ConversationsTest, AConversationFromASuggestionNeedsOnlyReturn)
{
    MorvaneSession &morvane = startWithAnswers();
    morvane.program().find(u"Try asking: What can you do?"_s).press();
    ASSERT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    ASSERT_TRUE(waitUntil(
        [&] { return morvane.program().find(u"Message Morvane"_s).text() == "What can you do?"_L1; }));
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(morvane.program().shows(u"You said What can you do?"_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Answer one."_s));
}

} // namespace
} // namespace morvane
