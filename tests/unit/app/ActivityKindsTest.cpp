#include "support/AppFixture.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Kind = ActivityStep::Kind;
using Service = FakeAIService;

/// Which lines of the activity log are progress, success and failure.
class ActivityKindsTest : public AppFixture {
protected:
    struct Line {
        Kind kind = Kind::info;
        QString text;
    };
    void expectLines(const QList<Line> &expected) const
    {
        const QList<ActivityStep> &steps = model->activity().steps();
        ASSERT_EQ(steps.size(), expected.size()) << activityTexts().join(u'\n').toStdString();
        for (qsizetype i = 0; i < steps.size(); ++i) {
            EXPECT_EQ(steps.at(i).text, expected.at(i).text);
            EXPECT_EQ(steps.at(i).kind, expected.at(i).kind) << steps.at(i).text.toStdString();
        }
    }
    void untilAsked()
    {
        ASSERT_TRUE(waitUntil(
            [this] { return model->gate().pendingToolCall() || model->questions().pendingQuestion(); }));
    }

    const AIToolCall read = toolCall(u"read_file"_s, R"({"path":"/a"})");
    const AIToolCall list = toolCall(u"run_shell_command"_s, R"({"command":"ls"})");
    const AIToolCall write = toolCall(u"write_file"_s, R"({"path":"/x"})");
    const AIToolCall question = toolCall(u"ask_user"_s, R"({"question":"Which?"})");
    const AIToolCall task = toolCall(u"task"_s, R"({"subagent":"researcher","description":"Look it up"})");
};

TEST_F(ActivityKindsTest, OfARunWithToolsAndAQuestion)
{
    service.willTurn(Service::calls({read, list, question, write}, u"I look."_s));
    service.willTurn(Service::answer(u"Done."_s));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    untilAsked();
    model->questions().resolveQuestion(u"That"_s);
    untilAsked();
    model->gate().resolvePermission(false, false);
    finishRun();
    expectLines({{Kind::info, u"Says: I look."_s},
                 {Kind::tool, u"Running: use the read_file tool"_s},
                 {Kind::info, u"read file returned: tool result"_s},
                 {Kind::info, u"Automatically allowed: run the command: ls"_s},
                 {Kind::tool, u"Running: run the command: ls"_s},
                 {Kind::info, u"run shell command returned: tool result"_s},
                 {Kind::info, u"Asks you: Which?"_s},
                 {Kind::info, u"You answered: That"_s},
                 {Kind::info, u"Waiting for approval to write a file at /x"_s},
                 {Kind::error, u"Denied: write a file at /x"_s},
                 {Kind::success, u"Finished. Completed: read file, run shell command."_s}});
}

TEST_F(ActivityKindsTest, OfASubagent)
{
    service.willTurn(Service::calls({task}));
    service.willTurn(Service::calls({read, list, question, write}));
    service.willTurn(Service::answer(u"Found."_s));
    service.willTurn(Service::answer(u"Done."_s));
    ASSERT_TRUE(model->send(u"go"_s, {}));
    untilAsked();
    EXPECT_EQ(model->status().statusText(), u"Subagent is waiting for your answer…"_s);
    model->questions().resolveQuestion(u"That"_s);
    untilAsked();
    model->gate().resolvePermission(false, false);
    finishRun();
    expectLines({{Kind::tool, u"Launching researcher subagent: Look it up"_s},
                 {Kind::tool, u"Subagent: use the read_file tool"_s},
                 {Kind::info, u"Subagent read file returned: tool result"_s},
                 {Kind::info, u"Automatically allowed: run the command: ls"_s},
                 {Kind::tool, u"Subagent: run the command: ls"_s},
                 {Kind::info, u"Subagent run shell command returned: tool result"_s},
                 {Kind::info, u"Subagent asks you: Which?"_s},
                 {Kind::info, u"You answered: That"_s},
                 {Kind::info, u"Subagent is waiting for approval to write a file at /x"_s},
                 {Kind::error, u"Denied: write a file at /x"_s},
                 {Kind::success, u"Researcher subagent finished."_s},
                 {Kind::success, u"Finished. No tools were needed."_s}});
}

TEST_F(ActivityKindsTest, OfWhatGoesInCircles)
{
    toolResults = {u"Error: no such file"_s, u"Error: no such file"_s};
    service.willTurn(Service::calls({read, read, read}));
    sendAndFinish(u"go"_s);
    expectLines({{Kind::tool, u"Running: use the read_file tool"_s},
                 {Kind::error, u"read file failed: Error: no such file"_s},
                 {Kind::tool, u"Running: use the read_file tool"_s},
                 {Kind::error, u"read file failed: Error: no such file"_s},
                 {Kind::error, u"Stopped: the same action repeated without progress."_s}});
}

TEST_F(ActivityKindsTest, OfASubagentThatComesToNoEnd)
{
    service.willTurn(Service::calls({task}));
    for (int turn = 0; turn < 6; ++turn)
        service.willTurn(Service::calls({read}));
    service.willTurn(Service::answer(u"Done."_s));
    sendAndFinish(u"go"_s);
    const auto &steps = model->activity().steps();
    ASSERT_GE(steps.size(), 3);
    const ActivityStep &limit = steps.at(steps.size() - 3);
    EXPECT_EQ(limit.text, u"The subagent used all its steps without a final answer."_s);
    EXPECT_EQ(limit.kind, Kind::error);
}

} // namespace
} // namespace morvane
