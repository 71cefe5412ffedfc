#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The keys that the list of shortcuts tells of, pressed on the real keyboard; those of the list of
/// conversations are pressed in ConversationsTest.
class ShortcutsTest : public MorvaneTest {
protected:
    static bool hasDraft(MorvaneSession &morvane, const QString &text)
    {
        return waitUntil([&] { return draft(morvane) == text; });
    }

    /// From the composer back to the messages.
    static void goToMessages(MorvaneSession &morvane)
    {
        auto focused = morvane.program().focused();
        while (focused && !focused->name.contains(" said "_L1))
            focused = moveFocus(morvane, u"Shift+Tab"_s);
        ASSERT_TRUE(focused.has_value());
    }

    /// Puts what is on the clipboard in the place of the draft.
    static void paste(MorvaneSession &morvane)
    {
        morvane.keyboard().type(u"x"_s);
        ASSERT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
        morvane.keyboard().press(u"Ctrl+A"_s);
        morvane.keyboard().press(u"Ctrl+V"_s);
    }
};

TEST_F(ShortcutsTest, F1ShowsTheListAndEscapeClosesIt)
{
    MorvaneSession &morvane = start({});
    morvane.keyboard().press(u"F1"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Send the message: Return"_s));
    // A row calls itself focused before its window takes keys.
    ASSERT_TRUE(morvane.program().shows([](const AccessibleNode &node) {
        return node.name == "Keyboard Shortcuts"_L1 && node.has(AccessibleState::active);
    }));
    morvane.keyboard().press(u"Down"_s);
    EXPECT_TRUE(morvane.program().focuses(u"Begin a new line: Shift+Return"_s));
    morvane.keyboard().press(u"Escape"_s);
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    EXPECT_TRUE(morvane.program().hides(u"Send the message: Return"_s));
}

TEST_F(ShortcutsTest, ShiftAndReturnBeginANewLineAndReturnSends)
{
    MorvaneSession &morvane = start({ScriptedTurn::saying({"An answer."})});
    morvane.keyboard().type(u"one"_s);
    morvane.keyboard().press(u"Shift+Return"_s);
    morvane.keyboard().type(u"two"_s);
    morvane.keyboard().press(u"Return"_s);
    ASSERT_TRUE(morvane.storesLastMessage(u"text"_s, u"An answer."_s));
    const QJsonArray messages = morvane.storedConversations().first().value("messages"_L1).toArray();
    EXPECT_EQ(messages.first().toObject().value("text"_L1), u"one\ntwo"_s);
}

TEST_F(ShortcutsTest, EscapeStopsTheAnswer)
{
    ScriptedTurn turn = ScriptedTurn::saying({"Never said."});
    turn.steps.insert(turn.steps.begin(), step::Stall{});
    MorvaneSession &morvane = start({turn});
    morvane.send(u"Go on"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Morvane is responding."_s));
    morvane.keyboard().press(u"Escape"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Generation cancelled."_s));
    EXPECT_TRUE(morvane.hasStatus(u"Cancelled"_s));
}

TEST_F(ShortcutsTest, PagesScrollFromTheComposerAndControlJGoesBackToTheLatest)
{
    std::string lines;
    for (int line = 0; line < 120; ++line)
        lines += "Line " + std::to_string(line) + ".\n\n";
    MorvaneSession &morvane = startWithAnswer(lines);
    const QString latest = u"Jump to the latest message"_s;
    EXPECT_TRUE(morvane.program().hides(latest));
    morvane.keyboard().press(u"PageUp"_s);
    EXPECT_TRUE(morvane.program().shows(latest));
    morvane.keyboard().press(u"PageDown"_s);
    EXPECT_TRUE(morvane.program().hides(latest));
    morvane.keyboard().press(u"PageUp"_s);
    ASSERT_TRUE(morvane.program().shows(latest));
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
    morvane.keyboard().press(u"Ctrl+J"_s);
    EXPECT_TRUE(morvane.program().hides(latest));
}

TEST_F(ShortcutsTest, MessagesAreReachedSelectedAndCopied)
{
    MorvaneSession &morvane = startWithAnswer();
    const QString question = u"You said Which birds?"_s;
    const QString answer = u"Morvane said An answer about birds."_s;
    goToMessages(morvane);
    morvane.keyboard().press(u"Home"_s);
    EXPECT_TRUE(morvane.program().focuses(question));
    morvane.keyboard().press(u"End"_s);
    EXPECT_TRUE(morvane.program().focuses(answer));
    morvane.keyboard().press(u"Ctrl+C"_s);
    paste(morvane);
    EXPECT_TRUE(hasDraft(morvane, u"An answer about birds."_s)) << draft(morvane).toStdString();

    goToMessages(morvane);
    morvane.keyboard().press(u"Home"_s);
    ASSERT_TRUE(morvane.program().focuses(question));
    morvane.keyboard().press(u"Ctrl+A"_s);
    morvane.keyboard().press(u"Ctrl+C"_s);
    paste(morvane);
    EXPECT_TRUE(waitUntil([&] {
        return draft(morvane).startsWith("Which birds?\n\n"_L1) &&
               draft(morvane).endsWith("\n\nAn answer about birds."_L1);
    })) << draft(morvane).toStdString();
}

TEST_F(ShortcutsTest, ShiftAndAnArrowSelectWholeMessages)
{
    MorvaneSession &morvane = startWithAnswer();
    goToMessages(morvane);
    morvane.keyboard().press(u"Home"_s);
    ASSERT_TRUE(morvane.program().focuses(u"You said Which birds?"_s));
    morvane.keyboard().press(u"Shift+Down"_s);
    morvane.keyboard().press(u"Ctrl+C"_s);
    paste(morvane);
    // What stands below the question is the activity, then the answer.
    EXPECT_TRUE(waitUntil([&] { return draft(morvane).startsWith("Which birds?\n\nActivity"_L1); }))
        << draft(morvane).toStdString();
    EXPECT_FALSE(draft(morvane).contains("An answer"_L1));
}

TEST_F(ShortcutsTest, ReturnShowsWhatCanBeDoneWithAMessage)
{
    MorvaneSession &morvane = startWithAnswer();
    goToMessages(morvane);
    morvane.keyboard().press(u"Home"_s);
    ASSERT_TRUE(morvane.program().focuses(u"You said Which birds?"_s));
    morvane.keyboard().press(u"Return"_s);
    morvane.keyboard().press(u"Down"_s); // from "Copy" to "Read again"
    morvane.keyboard().press(u"Return"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Which birds?"_s));
    EXPECT_TRUE(morvane.program().focuses(u"You said Which birds?"_s));
}

TEST_F(ShortcutsTest, F3GoesFromMatchToMatch)
{
    MorvaneSession &morvane = startWithAnswer();
    morvane.keyboard().press(u"Ctrl+F"_s);
    ASSERT_TRUE(morvane.program().focuses(u"Find in conversation"_s));
    morvane.keyboard().type(u"birds"_s);
    ASSERT_TRUE(morvane.program().shows(u"1 of 2"_s));
    morvane.keyboard().press(u"F3"_s);
    EXPECT_TRUE(morvane.program().shows(u"2 of 2"_s));
    morvane.keyboard().press(u"Shift+F3"_s);
    EXPECT_TRUE(morvane.program().shows(u"1 of 2"_s));
}

TEST_F(ShortcutsTest, TheTextIsMadeSmallerAndUsualAgain)
{
    MorvaneSession &morvane = startWithAnswer();
    morvane.keyboard().press(u"Ctrl+-"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Text size 90 percent."_s));
    morvane.keyboard().press(u"Ctrl+0"_s);
    EXPECT_TRUE(morvane.ear().hears(u"Text size 100 percent."_s));
}

TEST_F(ShortcutsTest, ControlCommaShowsTheSettings)
{
    MorvaneSession &morvane = start({});
    morvane.keyboard().press(u"Ctrl+,"_s);
    ASSERT_TRUE(morvane.program().shows(u"Morvane Settings"_s));
    morvane.keyboard().press(u"Escape"_s);
    EXPECT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
}

TEST_F(ShortcutsTest, ControlQEndsTheProgram)
{
    MorvaneSession &morvane = startToBeEndedByKey();
    morvane.keyboard().press(u"Ctrl+Q"_s);
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
}

} // namespace
} // namespace morvane
