#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <gmock/gmock.h>

namespace morvane {
namespace {

const auto titled = QStringLiteral("Conversation summarized as: Scripted title.");
const auto started = QStringLiteral("New conversation started.");

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
    ask(morvane, QStringLiteral("First question"));
    morvane.keyboard().press(QStringLiteral("Ctrl+N"));
    EXPECT_TRUE(morvane.ear().hears(started));
    EXPECT_TRUE(morvane.program().hides(QStringLiteral("Morvane said Answer one.")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Try asking: What can you do?")));
    EXPECT_EQ(morvane.storedConversations().size(), 1);
}

TEST_F(ConversationsTest, AnotherConversationIsOpenedFromTheList)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, QStringLiteral("First question"));
    morvane.keyboard().press(QStringLiteral("Ctrl+N"));
    ASSERT_TRUE(morvane.ear().hears(started));
    ask(morvane, QStringLiteral("Second question"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Answer two.")));

    // The newest conversation stands first, so the other is the last of the list.
    std::optional<AccessibleElement> older;
    ASSERT_TRUE(waitUntil([&] {
        QList<AccessibleElement> entries;
        morvane.program().tree().visit([&](const AccessibleNode &node) {
            if (begins(QStringLiteral("Open Scripted title, updated "))(node)) {
                entries.append(node.element);
            }
        });
        if (entries.size() == 2) {
            older = entries.last();
        }
        return older.has_value();
    }));
    EXPECT_TRUE(older->name().endsWith(QLatin1String(", 2 messages"))) << older->name().toStdString();
    // Tab goes round to the list, whose rows the arrow keys reach and Return opens.
    auto focused = morvane.program().focused();
    for (int stop = 0; stop < 20 && focused && !focused->name.startsWith(QLatin1String("Open ")); ++stop) {
        const QString before = focused->element.path();
        morvane.keyboard().press(QStringLiteral("Tab"));
        ASSERT_TRUE(waitUntil([&] {
            focused = morvane.program().focused();
            return focused && focused->element.path() != before;
        }));
    }
    ASSERT_TRUE(focused && focused->name.startsWith(QLatin1String("Open ")));
    morvane.keyboard().press(QStringLiteral("End"));
    morvane.keyboard().press(QStringLiteral("Return"));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Opened Scripted title.")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Answer one.")));
    EXPECT_TRUE(morvane.program().hides(QStringLiteral("Morvane said Answer two.")));
}

TEST_F(ConversationsTest, ADeletedConversationIsGoneFromListAndDisk)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, QStringLiteral("First question"));
    ASSERT_TRUE(waitUntil([&] { return morvane.storedConversations().size() == 1; }));
    morvane.program().find(QStringLiteral("Delete Scripted title")).press();
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Conversation deleted.")));
    EXPECT_TRUE(waitUntil([&] { return morvane.storedConversations().isEmpty(); }));
    EXPECT_TRUE(morvane.program().hides(QStringLiteral("Morvane said Answer one.")));
    EXPECT_TRUE(
        morvane.program().shows(QStringLiteral("No saved conversations yet. They are saved automatically.")));
}

TEST_F(ConversationsTest, TheLastConversationIsOpenAgainAfterARestart)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, QStringLiteral("First question"));
    morvane.quit();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Answer one.")));
    ask(morvane, QStringLiteral("Second question"));
    EXPECT_TRUE(morvane.storesLastMessage(QStringLiteral("text"), QStringLiteral("Answer two.")));
    EXPECT_EQ(morvane.storedConversations().size(), 1);
}

TEST_F(ConversationsTest, AKilledProgramLosesNoFinishedRequest)
{
    MorvaneSession &morvane = startWithAnswers();
    ask(morvane, QStringLiteral("First question"));
    ASSERT_TRUE(morvane.storesLastMessage(QStringLiteral("text"), QStringLiteral("Answer one.")));
    morvane.program().process().kill();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Answer one.")));
}

TEST_F(ConversationsTest, AConversationFromASuggestionNeedsOnlyReturn)
{
    MorvaneSession &morvane = startWithAnswers();
    morvane.program().find(QStringLiteral("Try asking: What can you do?")).press();
    ASSERT_TRUE(morvane.program().focuses(QStringLiteral("Message Morvane")));
    ASSERT_TRUE(waitUntil([&] {
        return morvane.program().find(QStringLiteral("Message Morvane")).text() ==
               QLatin1String("What can you do?");
    }));
    morvane.keyboard().press(QStringLiteral("Return"));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("You said What can you do?")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Answer one.")));
}

} // namespace
} // namespace morvane
