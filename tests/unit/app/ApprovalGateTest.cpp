#include "support/AppFixture.h"

#include "app/ApprovalGate.h"
#include "support/AskForPermit.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ApprovalGateTest : public AppFixture {
protected:
    ApprovalGate &gate() { return model->gate(); }

    ToolVerdict decided(const AIToolCall &call) { return runTask(scheduler, gate().decide(call)); }

    TaskHandle<std::optional<ToolPermit>> request(const AIToolCall &call)
    {
        auto handle = scheduler.spawn(askForPermit(&gate(), call));
        settle();
        return handle;
    }
};

AIToolCall shell(const char *arguments)
{
    return toolCall(u"run_shell_command"_s, arguments);
}

TEST_F(ApprovalGateTest, OnlyDestructiveShellCommandsAsk)
{
    EXPECT_TRUE(gate().requiresApproval(shell(R"({"command":"rm -rf /tmp/x"})")));
    EXPECT_FALSE(gate().requiresApproval(shell(R"({"command":"ls"})")));
    EXPECT_TRUE(gate().requiresApproval(shell(R"({"command":"ls","destructive":true})")));
}

TEST_F(ApprovalGateTest, AlwaysAllowedListPlaysNoPartForTheShell)
{
    settings->setAlwaysAllowedTools({u"run_shell_command"_s});
    EXPECT_TRUE(gate().requiresApproval(shell(R"({"command":"sudo ls"})")));
}

TEST_F(ApprovalGateTest, FileChangesAskUnlessAlwaysAllowed)
{
    EXPECT_TRUE(gate().requiresApproval(toolCall(u"write_file"_s)));
    EXPECT_TRUE(gate().requiresApproval(toolCall(u"edit_file"_s)));
    EXPECT_TRUE(gate().requiresApproval(toolCall(u"mcp_a_b"_s)));
    settings->setAlwaysAllowedTools({u"write_file"_s, u"mcp_a_b"_s});
    EXPECT_FALSE(gate().requiresApproval(toolCall(u"write_file"_s)));
    EXPECT_TRUE(gate().requiresApproval(toolCall(u"edit_file"_s)));
    EXPECT_FALSE(gate().requiresApproval(toolCall(u"mcp_a_b"_s)));
}

TEST_F(ApprovalGateTest, EverythingElseRunsWithoutAsking)
{
    for (const char *name : {"read_file", "web_fetch", "click_at", "capture_screen", "browser_open"})
        EXPECT_FALSE(gate().requiresApproval(toolCall(QString::fromLatin1(name)))) << name;
}

TEST_F(ApprovalGateTest, AnUnaskedPermitIsThereForCallsThatNeedNoAnswerOnly)
{
    EXPECT_TRUE(gate().permitUnasked(decided(shell(R"({"command":"ls"})"))));
    EXPECT_FALSE(gate().permitUnasked(decided(shell(R"({"command":"rm -rf /tmp/x"})"))));
    EXPECT_FALSE(gate().permitUnasked(decided(toolCall(u"write_file"_s))));
    settings->setAlwaysAllowedTools({u"write_file"_s, u"run_shell_command"_s});
    EXPECT_TRUE(gate().permitUnasked(decided(toolCall(u"write_file"_s))));
    EXPECT_FALSE(gate().permitUnasked(decided(shell(R"({"command":"rm -rf /tmp/x"})"))));
}

TEST_F(ApprovalGateTest, AVerdictSaysAllThatIsToBeKnownOfACall)
{
    using Approval = ToolVerdict::Approval;
    const AIToolCall remove = shell(R"({"command":"rm -rf /tmp/x"})");
    const ToolVerdict verdict = decided(remove);
    EXPECT_EQ(verdict.call(), remove);
    EXPECT_EQ(verdict.phrase(), describe(remove).phrase);
    EXPECT_TRUE(verdict.isDestructive());
    EXPECT_EQ(verdict.approval(), Approval::asks);
    EXPECT_FALSE(decided(shell(R"({"command":"ls"})")).isDestructive());
    EXPECT_EQ(decided(shell(R"({"command":"ls"})")).approval(), Approval::automatic);
    EXPECT_EQ(decided(toolCall(u"read_file"_s)).approval(), Approval::notNeeded);
    EXPECT_EQ(decided(toolCall(u"mcp_a_b"_s)).approval(), Approval::notNeeded);
    EXPECT_EQ(decided(toolCall(u"write_file"_s)).approval(), Approval::asks);
    settings->setAlwaysAllowedTools({u"write_file"_s});
    EXPECT_EQ(decided(toolCall(u"write_file"_s)).approval(), Approval::automatic);
}

static_assert(!std::is_constructible_v<ToolVerdict, AIToolCall, QString, bool, ToolVerdict::Approval> &&
                  !std::is_constructible_v<ToolPermit, ToolVerdict>,
              "only the gate decides");

TEST_F(ApprovalGateTest, ToolsOfToolServersArePermittedUnasked)
{
    const AIToolCall call = toolCall(u"mcp_files_remove"_s);
    EXPECT_TRUE(gate().requiresApproval(call));
    EXPECT_TRUE(gate().permitUnasked(decided(call)));
}

TEST_F(ApprovalGateTest, APermitIsForTheCallThatWasShown)
{
    const AIToolCall call = shell(R"({"command":"rm -rf /tmp/x"})");
    auto handle = request(call);
    gate().resolvePermission(true, false);
    settle();
    ASSERT_TRUE(handle.done());
    const std::optional<ToolPermit> permit = handle.result();
    ASSERT_TRUE(permit);
    EXPECT_EQ(permit->call(), call);
}

static_assert(!std::is_constructible_v<ToolPermit, AIToolCall> &&
                  !std::is_default_constructible_v<ToolPermit>,
              "only the gate makes permits");
static_assert(!std::is_copy_constructible_v<ToolPermit>, "a permit is good for one use");

TEST_F(ApprovalGateTest, PendingRequestDescribesTheCall)
{
    auto handle = request(shell(R"({"command":"ls","destructive":true})"));
    ASSERT_TRUE(gate().pendingToolCall().has_value());
    EXPECT_EQ(gate().pendingToolCall()->summary,
              u"run the command: ls. Warning: this is a destructive action that may delete data "
              "or be hard to undo"_s);
    EXPECT_TRUE(gate().pendingToolCall()->destructive);
    gate().resolvePermission(true, true);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_TRUE(handle.result());
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
}

TEST_F(ApprovalGateTest, SecondAnswerIsHarmless)
{
    auto handle = request(toolCall(u"write_file"_s));
    gate().resolvePermission(false, false);
    gate().resolvePermission(true, true);
    settle();
    ASSERT_TRUE(handle.done());
    EXPECT_FALSE(handle.result());
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
}

TEST_F(ApprovalGateTest, ASecondRequestWaitsItsTurn)
{
    auto first = request(shell(R"({"command":"rm -rf a"})"));
    auto second = request(shell(R"({"command":"rm -rf b"})"));
    auto third = request(toolCall(u"write_file"_s));
    ASSERT_TRUE(gate().pendingToolCall());
    EXPECT_THAT(gate().pendingToolCall()->summary, testing::Truly([](const QString &summary) {
                    return summary.startsWith(u"run the command: rm -rf a"_s);
                }));
    gate().resolvePermission(false, false);
    // An answer on its way to the sheet that is gone answers nothing.
    gate().resolvePermission(true, true);
    settle();
    ASSERT_TRUE(first.done());
    EXPECT_FALSE(first.result());
    ASSERT_FALSE(second.done());
    gate().resolvePermission(true, false);
    settle();
    ASSERT_TRUE(second.done());
    const std::optional<ToolPermit> permit = second.result();
    ASSERT_TRUE(permit);
    EXPECT_EQ(permit->call(), shell(R"({"command":"rm -rf b"})"));
    ASSERT_TRUE(gate().pendingToolCall());
    EXPECT_EQ(gate().pendingToolCall()->toolName, u"write_file"_s);
    EXPECT_FALSE(third.done());
    gate().resolvePermission(false, false);
    settle();
    EXPECT_TRUE(third.done());
    EXPECT_FALSE(gate().pendingToolCall());
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
}

TEST_F(ApprovalGateTest, ASecondQuestionWaitsItsTurn)
{
    Questions &questions = model->questions();
    auto first = scheduler.spawn(questions.askUserQuestion(u"first?"_s, {}));
    auto second = scheduler.spawn(questions.askUserQuestion(u"second?"_s, {}));
    settle();
    ASSERT_TRUE(questions.pendingQuestion());
    EXPECT_EQ(questions.pendingQuestion()->question, u"first?"_s);
    EXPECT_EQ(announcer.spoken, QStringList{u"Morvane asks: first?"_s});
    questions.resolveQuestion(u"one"_s);
    settle();
    ASSERT_TRUE(first.done());
    EXPECT_EQ(first.result(), u"one"_s);
    ASSERT_TRUE(questions.pendingQuestion());
    EXPECT_EQ(questions.pendingQuestion()->question, u"second?"_s);
    questions.resolveQuestion(u"two"_s);
    settle();
    ASSERT_TRUE(second.done());
    EXPECT_EQ(second.result(), u"two"_s);
}

TEST_F(ApprovalGateTest, DenialIsNotRememberedEvenWithTheFlag)
{
    auto handle = request(toolCall(u"write_file"_s));
    gate().resolvePermission(false, true);
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
}

TEST_F(ApprovalGateTest, AnswerWithNothingPendingChangesNothing)
{
    int changes = 0;
    QObject::connect(&gate(), &ApprovalGate::pendingToolCallChanged, &gate(), [&changes] { ++changes; });
    gate().resolvePermission(true, true);
    EXPECT_EQ(changes, 0);
    EXPECT_TRUE(settings->alwaysAllowedTools().isEmpty());
}

TEST_F(ApprovalGateTest, QuestionAnswerWithNothingPendingChangesNothing)
{
    int changes = 0;
    QObject::connect(&model->questions(), &Questions::pendingQuestionChanged, &gate(),
                     [&changes] { ++changes; });
    model->questions().resolveQuestion(u"x"_s);
    EXPECT_EQ(changes, 0);
}

} // namespace
} // namespace morvane
