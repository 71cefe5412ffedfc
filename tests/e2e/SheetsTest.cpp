#include "AccessibleEventCount.h"
#include "MorvaneTest.h"

#include "support/AccessibilityBus.h"
#include "support/WaitUntil.h"

#include <QDeadlineTimer>
#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The two sheets that hold a run until the user has answered.
class SheetsTest : public MorvaneTest {
protected:
    static constexpr auto question = "Morvane wants to write a file at /nowhere/note.txt. Do you allow it?";

    static ScriptedTurn writing(const std::string &content)
    {
        return callingTool("write_file", R"({"path":"/nowhere/note.txt","content":")" + content + R"("})");
    }

    /// Presses a key until the sheet is gone: a sheet takes no keys before the user has paused for a moment.
    static bool answerWith(MorvaneSession &morvane, const QString &key)
    {
        QDeadlineTimer pause(0);
        return waitUntil([&] {
            if (pause.hasExpired()) {
                morvane.keyboard().press(key);
                pause.setRemainingTime(700);
            }
            return !morvane.program().tree().first([](const AccessibleNode &node) {
                return node.name == "Deny the action"_L1 && node.has(AccessibleState::showing);
            });
        });
    }
};

TEST_F(SheetsTest, EscapeDeniesAndTheRunGoesOn)
{
    MorvaneSession &morvane = start({writing("x"), ScriptedTurn::saying({"Then not."})});
    morvane.send(u"Write a note"_s);
    ASSERT_TRUE(morvane.ear().hears(QString::fromLatin1(question)));
    ASSERT_TRUE(morvane.program().shows(u"Deny the action"_s));
    EXPECT_TRUE(morvane.hasStatus(u"Waiting for your approval…"_s));
    EXPECT_TRUE(answerWith(morvane, u"Escape"_s));
    EXPECT_TRUE(morvane.ear().hears(u"Action denied. The assistant will continue."_s));
    ASSERT_TRUE(morvane.ear().hears(u"Then not."_s));
    EXPECT_TRUE(morvane.program().hides(u"Deny the action"_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane said Then not."_s));
}

TEST_F(SheetsTest, TheWindowBelowIsReadAsItIsAndCannotBeReached)
{
    MorvaneSession &morvane = start({writing("x"), ScriptedTurn::saying({"Then not."})});
    morvane.send(u"Write a note"_s);
    ASSERT_TRUE(morvane.program().shows(u"Deny the action"_s));
    const AccessibleElement field = morvane.program().find(u"Message Morvane"_s);
    EXPECT_TRUE(field.has(AccessibleState::enabled));
    EXPECT_TRUE(field.has(AccessibleState::sensitive));
    EXPECT_TRUE(morvane.program().find(u"You said Write a note"_s).has(AccessibleState::enabled));
    const auto first = morvane.program().focused();
    ASSERT_TRUE(first.has_value());
    field.takeFocus();
    EXPECT_FALSE(field.has(AccessibleState::focused));
    EXPECT_EQ(morvane.program().focused()->element.path(), first->element.path());
    morvane.program().find(u"Delete Write a note"_s).press();
    EXPECT_THROW(field.setText(u"written below"_s), AccessibilityError);
    EXPECT_THROW(field.insertText(0, u"written below"_s), AccessibilityError);
    morvane.keyboard().press(u"Ctrl+="_s);
    morvane.keyboard().press(u"Ctrl+F"_s);
    ASSERT_TRUE(answerWith(morvane, u"Escape"_s));
    ASSERT_TRUE(morvane.ear().hears(u"Then not."_s));
    EXPECT_TRUE(morvane.program().hides(u"Find in conversation"_s));
    morvane.keyboard().press(u"Ctrl+="_s);
    ASSERT_TRUE(morvane.ear().hears(u"Text size 110 percent."_s));
    EXPECT_EQ(morvane.ear().heard().filter(u"Text size"_s).size(), 1);
    EXPECT_EQ(field.text(), QString());
}

TEST_F(SheetsTest, ReturnAllows)
{
    MorvaneSession &morvane = start({writing("x"), ScriptedTurn::saying({"Done."})});
    morvane.send(u"Write a note"_s);
    ASSERT_TRUE(morvane.program().shows(u"Allow the action"_s));
    EXPECT_TRUE(answerWith(morvane, u"Return"_s));
    EXPECT_TRUE(morvane.ear().hears(u"Approved. Running the action."_s));
    EXPECT_TRUE(morvane.ear().hears(u"Done."_s));
}

TEST_F(SheetsTest, AlwaysAllowingASortOfActionAsksOnce)
{
    MorvaneSession &morvane = start({writing("one"), writing("two"), ScriptedTurn::saying({"Both done."})});
    morvane.send(u"Write twice"_s);
    const AccessibleElement toggle =
        morvane.program().find(u"Always allow this type of action"_s, AccessibleRole::checkBox);
    EXPECT_EQ(toggle.description(),
              u"It will run automatically next time. You can change this in Settings."_s);
    EXPECT_FALSE(toggle.has(AccessibleState::checked));
    toggle.act(u"Toggle"_s);
    morvane.program().find(u"Allow the action"_s).press();
    ASSERT_TRUE(morvane.ear().hears(u"Both done."_s));
    EXPECT_EQ(morvane.ear().heard().count(QString::fromLatin1(question)), 1);
    EXPECT_EQ(morvane.activity().filter(u"Automatically allowed: "_s).size(), 1);
}

TEST_F(SheetsTest, ADestructiveRequestSaysSoAndCannotBeAllowedForEver)
{
    MorvaneSession &morvane = start({callingTool("run_shell_command", R"({"command":"rm -rf /nowhere"})"),
                                     ScriptedTurn::saying({"Left alone."})});
    morvane.send(u"Clean up"_s);
    ASSERT_TRUE(morvane.program().shows(u"Allow this destructive action"_s));
    EXPECT_TRUE(morvane.ear().hears(
        u"Morvane wants to run the command: rm -rf /nowhere. Warning: this is a destructive action "
        "that may delete data or be hard to undo. Do you allow it?"_s));
    EXPECT_TRUE(morvane.program().hides(u"Always allow this type of action"_s));
    morvane.program().find(u"Deny the action"_s).press();
    ASSERT_TRUE(morvane.ear().hears(u"Left alone."_s));
    EXPECT_EQ(lastResult(morvane),
              u"The user denied permission for this action. Do not attempt it again unless the "
              "user asks."_s);
}

TEST_F(SheetsTest, AnOpenQuestionDoesNotHoldUpTheEnd)
{
    MorvaneSession &morvane = start({callingTool("ask_user", R"({"question":"Which colour?"})")});
    morvane.send(u"Paint it"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Morvane asks: Which colour?"_s));
    morvane.quit();
    // A run that was dropped, because it did not end in time, leaves no finished answer.
    EXPECT_TRUE(morvane.storesLastMessage(u"role"_s, u"assistant"_s));
    EXPECT_TRUE(morvane.storesLastMessage(u"isStreaming"_s, false));
}

TEST_F(SheetsTest, AQuestionIsAnsweredByOneOfItsOptions)
{
    MorvaneSession &morvane =
        start({callingTool("ask_user", R"({"question":"Which colour?","options":["Red","Blue"]})"),
               ScriptedTurn::saying({"Blue it is."})});
    morvane.send(u"Paint it"_s);
    ASSERT_TRUE(morvane.ear().hears(u"Morvane asks: Which colour?"_s));
    EXPECT_TRUE(morvane.program().shows(u"Morvane asks: Which colour?"_s));
    EXPECT_TRUE(morvane.program().shows(u"Answer: Red"_s));
    morvane.program().find(u"Answer: Blue"_s).press();
    ASSERT_TRUE(morvane.ear().hears(u"Blue it is."_s));
    EXPECT_EQ(lastResult(morvane), u"Blue"_s);
    EXPECT_TRUE(morvane.program().hides(u"Answer: Blue"_s));
}

TEST_F(SheetsTest, AQuestionIsAnsweredInTheUsersOwnWords)
{
    MorvaneSession &morvane = start(
        {callingTool("ask_user", R"({"question":"Which colour?"})"), ScriptedTurn::saying({"As you like."})});
    morvane.send(u"Paint it"_s);
    const AccessibleElement field = morvane.program().find(u"Your answer"_s);
    const AccessibleElement sendAnswer = morvane.program().find(u"Send your custom answer"_s);
    field.setText(u"   "_s);
    sendAnswer.press();
    field.setText(u" turquoise "_s);
    sendAnswer.press();
    ASSERT_TRUE(morvane.ear().hears(u"As you like."_s));
    EXPECT_EQ(lastResult(morvane), u"turquoise"_s);
}

TEST_F(SheetsTest, OpeningAndClosingASheetTellsAReaderLittle)
{
    const auto stalled = [](ScriptedTurn turn) {
        turn.steps.insert(turn.steps.begin(), step::Stall{});
        return turn;
    };
    const std::vector<ScriptedTurn> kinds{
        writing("x"), callingTool("ask_user", R"({"question":"Which?","options":["A","B"]})")};
    for (const ScriptedTurn &kind : kinds) {
        MorvaneSession &morvane = prepare(
            {stalled(kind), stalled(kind), stalled(ScriptedTurn::saying({"Done."}))}, Hearing::notifications);
        morvane.start();
        AccessibleEventCount events(morvane);
        morvane.send(u"Go on"_s);
        ASSERT_TRUE(morvane.ear().hears(u"Morvane is responding."_s));
        const bool asks = &kind == &kinds.back();
        // The second request finds a sheet that was open before.
        for (int round = 0; round < 2; ++round) {
            ASSERT_TRUE(waitUntil([&] { return morvane.model().requests().size() > size_t(round); }));
            events.begin();
            morvane.ear().forget();
            morvane.model().release();
            ASSERT_TRUE(
                morvane.ear().hears(asks ? u"Morvane asks: Which?"_s : QString::fromLatin1(question)));
            QStringList told = events.sinceBegin();
            EXPECT_LE(told.size(), 15) << told.join(u'\n').toStdString();
            EXPECT_GE(told.size(), 4) << told.join(u'\n').toStdString();

            const AccessibleElement button =
                morvane.program().find(asks ? u"Answer: A"_s : u"Deny the action"_s);
            events.begin();
            button.press();
            ASSERT_TRUE(morvane.program().focuses(u"Message Morvane"_s));
            ASSERT_TRUE(waitUntil([&] { return morvane.model().requests().size() > size_t(round) + 1; }));
            told = events.sinceBegin();
            EXPECT_LE(told.size(), 15) << told.join(u'\n').toStdString();
        }
    }
}

} // namespace
} // namespace morvane
