#include "support/AppFixture.h"

#include "support/AskForPermit.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

using Service = FakeAIService;

class QuittingTest : public AppFixture {
protected:
    /// Quits while `call` waits for the user. A run that does not end by itself is dropped with its message
    /// still streaming.
    void quitDuring(const AIToolCall &call, const QList<AIToolCall> &callsOfSubagent = {})
    {
        service.willTurn(Service::calls({call, toolCall(u"read_file"_s)}));
        service.willTurn(Service::calls(callsOfSubagent));
        ASSERT_TRUE(model->send(u"hi"_s, {}));
        ASSERT_TRUE(waitUntil(
            [this] { return model->questions().pendingQuestion() || model->gate().pendingToolCall(); }));
        model->prepareToQuit();
        EXPECT_FALSE(model->questions().pendingQuestion());
        EXPECT_FALSE(model->gate().pendingToolCall());
        scheduler.shutdown(5s);
        EXPECT_FALSE(lastMessage().isStreaming);
        EXPECT_TRUE(executed.isEmpty());
    }
};

TEST_F(QuittingTest, AnOpenQuestionHoldsNothingUp)
{
    quitDuring(toolCall(u"ask_user"_s, R"({"question":"Sure?"})"));
}

TEST_F(QuittingTest, AnOpenApprovalHoldsNothingUp)
{
    quitDuring(toolCall(u"edit_file"_s, R"({"file_path":"/x"})"));
}

TEST_F(QuittingTest, NothingIsBegunAfterASubagentsQuestion)
{
    quitDuring(toolCall(u"task"_s, R"({"description":"look"})"),
               {toolCall(u"ask_user"_s, R"({"question":"Sure?"})")});
}

TEST_F(QuittingTest, WhatWasAllowedOnlyJustIsNotBegun)
{
    service.willTurn(Service::calls({toolCall(u"edit_file"_s, R"({"file_path":"/x"})")}));
    ASSERT_TRUE(model->send(u"hi"_s, {}));
    ASSERT_TRUE(waitUntil([this] { return model->gate().pendingToolCall().has_value(); }));
    model->gate().resolvePermission(true, false);
    model->prepareToQuit();
    finishRun();
    EXPECT_TRUE(executed.isEmpty());
    EXPECT_FALSE(lastMessage().isStreaming);
}

TEST_F(QuittingTest, EveryoneWhoWaitsForTheUserIsLetGo)
{
    ApprovalGate &gate = model->gate();
    const auto asks = [&gate] {
        return askForPermit(&gate, toolCall(u"edit_file"_s, R"({"file_path":"/x"})"));
    };
    auto first = scheduler.spawn(asks());
    auto second = scheduler.spawn(asks());
    settle();
    int told = 0;
    QObject::connect(&gate, &ApprovalGate::pendingToolCallChanged, model.get(), [&told] { ++told; });
    model->prepareToQuit();
    settle();
    ASSERT_TRUE(first.done());
    ASSERT_TRUE(second.done());
    EXPECT_THROW(first.result(), Cancelled);
    EXPECT_THROW(second.result(), Cancelled);
    EXPECT_FALSE(gate.pendingToolCall());
    EXPECT_EQ(told, 1);
}

TEST_F(QuittingTest, AQuestionThatIsLeftIsToldToBeGone)
{
    auto asking = scheduler.spawn(model->questions().askUserQuestion(u"Sure?"_s, {}));
    settle();
    ASSERT_TRUE(model->questions().pendingQuestion());
    int told = 0;
    QObject::connect(&model->questions(), &Questions::pendingQuestionChanged, model.get(),
                     [&told] { ++told; });
    model->prepareToQuit();
    EXPECT_EQ(told, 1);
    settle();
    ASSERT_TRUE(asking.done());
    EXPECT_THROW(asking.result(), Cancelled);
}

TEST_F(QuittingTest, WhatAsksWhileTheProgramEndsIsNotShown)
{
    model->prepareToQuit();
    auto asking = scheduler.spawn(model->questions().askUserQuestion(u"Sure?"_s, {}));
    settle();
    ASSERT_TRUE(asking.done());
    EXPECT_THROW(asking.result(), Cancelled);
    EXPECT_TRUE(announcer.spoken.isEmpty());
}

} // namespace
} // namespace morvane
