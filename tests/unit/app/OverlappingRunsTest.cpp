#include "support/AppFixture.h"

#include "async/OneShot.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using Service = FakeAIService;

Task<ToolResult> textOf(OneShot<QString> text)
{
    co_return co_await text.wait();
}

/// A cancelled run is on its way out, held up by its tool, while the user goes on.
class OverlappingRunsTest : public AppFixture {
protected:
    void cancelDuringATool()
    {
        tool = [this](ToolPermit permit) {
            executed.append(permit.call().name);
            return textOf(m_toolEnd);
        };
        service.willTurn(Service::calls({toolCall(u"first"_s)}));
        ASSERT_TRUE(model->send(u"go"_s, {}));
        ASSERT_TRUE(waitUntil([this] { return executed.size() == 1; }));
        model->cancel();
        announcer.spoken.clear();
    }
    void endTheTool()
    {
        m_toolEnd.resume(u"tool result"_s);
        settle();
    }

private:
    OneShot<QString> m_toolEnd;
};

TEST_F(OverlappingRunsTest, TheEndOfTheOlderRunDoesNotEndTheNewerOne)
{
    cancelDuringATool();
    neverAnswer();
    ASSERT_TRUE(model->send(u"go on"_s, {}));
    settle();
    const QString status = model->status().statusText();
    endTheTool();
    EXPECT_TRUE(model->isBusy());
    EXPECT_TRUE(lastMessage().isStreaming);
    EXPECT_EQ(model->status().statusText(), status);
    EXPECT_FALSE(announcer.spoken.contains(u"Generation cancelled."_s));
    model->cancel();
    settle();
    EXPECT_FALSE(model->isBusy());
    EXPECT_TRUE(announcer.spoken.contains(u"Generation cancelled."_s));
}

TEST_F(OverlappingRunsTest, ARunWhoseConversationWasLeftEndsWithoutAWord)
{
    cancelDuringATool();
    model->newConversation();
    neverAnswer();
    ASSERT_TRUE(model->send(u"something else"_s, {}));
    settle();
    announcer.spoken.clear();
    endTheTool();
    EXPECT_TRUE(model->isBusy());
    EXPECT_TRUE(lastMessage().isStreaming);
    EXPECT_FALSE(announcer.spoken.contains(u"Generation cancelled."_s));
}

TEST_F(OverlappingRunsTest, TheEndOfACancelledRunIsToldAgainWhileNothingElseIsDone)
{
    cancelDuringATool();
    endTheTool();
    EXPECT_EQ(announcer.spoken.count(u"Generation cancelled."_s), 1);
    EXPECT_EQ(model->status().statusText(), u"Cancelled"_s);
}

} // namespace
} // namespace morvane
