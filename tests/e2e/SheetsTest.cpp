#include "MorvaneTest.h"

#include "support/WaitUntil.h"

#include <QDeadlineTimer>
#include <gmock/gmock.h>

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
                return node.name == QLatin1String("Deny the action") && node.has(AccessibleState::showing);
            });
        });
    }
};

TEST_F(SheetsTest, EscapeDeniesAndTheRunGoesOn)
{
    MorvaneSession &morvane = start({writing("x"), ScriptedTurn::saying({"Then not."})});
    morvane.send(QStringLiteral("Write a note"));
    ASSERT_TRUE(morvane.ear().hears(QString::fromLatin1(question)));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Deny the action")));
    EXPECT_TRUE(morvane.hasStatus(QStringLiteral("Waiting for your approval…")));
    EXPECT_TRUE(answerWith(morvane, QStringLiteral("Escape")));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Action denied. The assistant will continue.")));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Then not.")));
    EXPECT_TRUE(morvane.program().hides(QStringLiteral("Deny the action")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane said Then not.")));
}

TEST_F(SheetsTest, ReturnAllows)
{
    MorvaneSession &morvane = start({writing("x"), ScriptedTurn::saying({"Done."})});
    morvane.send(QStringLiteral("Write a note"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Allow the action")));
    EXPECT_TRUE(answerWith(morvane, QStringLiteral("Return")));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Approved. Running the action.")));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral("Done.")));
}

TEST_F(SheetsTest, AlwaysAllowingASortOfActionAsksOnce)
{
    MorvaneSession &morvane = start({writing("one"), writing("two"), ScriptedTurn::saying({"Both done."})});
    morvane.send(QStringLiteral("Write twice"));
    const AccessibleElement toggle =
        morvane.program().find(QStringLiteral("Always allow this type of action"), AccessibleRole::checkBox);
    EXPECT_EQ(toggle.description(),
              QStringLiteral("It will run automatically next time. You can change this in Settings."));
    EXPECT_FALSE(toggle.has(AccessibleState::checked));
    toggle.act(QStringLiteral("Toggle"));
    morvane.program().find(QStringLiteral("Allow the action")).press();
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Both done.")));
    EXPECT_EQ(morvane.ear().heard().count(QString::fromLatin1(question)), 1);
    EXPECT_EQ(morvane.activity().filter(QStringLiteral("Automatically allowed: ")).size(), 1);
}

TEST_F(SheetsTest, ADestructiveRequestSaysSoAndCannotBeAllowedForEver)
{
    MorvaneSession &morvane = start({callingTool("run_shell_command", R"({"command":"rm -rf /nowhere"})"),
                                     ScriptedTurn::saying({"Left alone."})});
    morvane.send(QStringLiteral("Clean up"));
    ASSERT_TRUE(morvane.program().shows(QStringLiteral("Allow this destructive action")));
    EXPECT_TRUE(morvane.ear().hears(QStringLiteral(
        "Morvane wants to run the command: rm -rf /nowhere. Warning: this is a destructive action "
        "that may delete data or be hard to undo. Do you allow it?")));
    EXPECT_TRUE(morvane.program().hides(QStringLiteral("Always allow this type of action")));
    morvane.program().find(QStringLiteral("Deny the action")).press();
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Left alone.")));
    EXPECT_EQ(lastResult(morvane),
              QStringLiteral("The user denied permission for this action. Do not attempt it again unless the "
                             "user asks."));
}

TEST_F(SheetsTest, AQuestionIsAnsweredByOneOfItsOptions)
{
    MorvaneSession &morvane =
        start({callingTool("ask_user", R"({"question":"Which colour?","options":["Red","Blue"]})"),
               ScriptedTurn::saying({"Blue it is."})});
    morvane.send(QStringLiteral("Paint it"));
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Morvane asks: Which colour?")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Morvane asks: Which colour?")));
    EXPECT_TRUE(morvane.program().shows(QStringLiteral("Answer: Red")));
    morvane.program().find(QStringLiteral("Answer: Blue")).press();
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("Blue it is.")));
    EXPECT_EQ(lastResult(morvane), QStringLiteral("Blue"));
    EXPECT_TRUE(morvane.program().hides(QStringLiteral("Answer: Blue")));
}

TEST_F(SheetsTest, AQuestionIsAnsweredInTheUsersOwnWords)
{
    MorvaneSession &morvane = start(
        {callingTool("ask_user", R"({"question":"Which colour?"})"), ScriptedTurn::saying({"As you like."})});
    morvane.send(QStringLiteral("Paint it"));
    const AccessibleElement field = morvane.program().find(QStringLiteral("Your answer"));
    const AccessibleElement sendAnswer = morvane.program().find(QStringLiteral("Send your custom answer"));
    field.setText(QStringLiteral("   "));
    sendAnswer.press();
    field.setText(QStringLiteral(" turquoise "));
    sendAnswer.press();
    ASSERT_TRUE(morvane.ear().hears(QStringLiteral("As you like.")));
    EXPECT_EQ(lastResult(morvane), QStringLiteral("turquoise"));
}

} // namespace
} // namespace morvane
