#include "ScreenFixture.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Sequences that are under way when something else happens.
class SequenceStopTest : public ScreenFixture {
protected:
    /// Sequences stay in the first sleep from which on `isPlace` holds, until letGo().
    void holdSleeps(std::function<bool()> isPlace = [] { return true; })
    {
        m_desktop.clock->onSleep = [this, isPlace = std::move(isPlace)] {
            if (!isPlace())
                return;
            m_isHeld = true;
            while (!m_goesOn)
                std::this_thread::yield();
        };
    }
    bool isHeld() const
    {
        return waitUntil([this] { return m_isHeld.load(); });
    }
    void letGo() { m_goesOn = true; }

    TaskHandle<ToolResult> beginHeldRightClick(QPoint point)
    {
        holdSleeps();
        TaskHandle<ToolResult> click = m_scheduler.spawn(m_tools.mouseRightClick(point));
        EXPECT_TRUE(isHeld());
        return click;
    }

private:
    std::atomic<bool> m_isHeld = false;
    std::atomic<bool> m_goesOn = false;
};

TEST_F(SequenceStopTest, AStopBetweenTwoEventsEndsTheSequenceAndLetsGoOfWhatIsHeld)
{
    holdSleeps([this] { return m_desktop.log.events().count(u"sleep 15"_s) >= 3; });
    TaskHandle<ToolResult> handle = m_scheduler.spawn(m_tools.mouseDrag({0, 0}, {120, 0}));
    ASSERT_TRUE(isHeld());
    handle.cancel();
    letGo();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    const QStringList log = events();
    EXPECT_EQ(log.filter(u"dragged"_s).size(), 3);
    EXPECT_EQ(log.last(), u"release left"_s);
}

TEST_F(SequenceStopTest, ASequenceWaitsForTheOneThatIsUnderWay)
{
    TaskHandle<ToolResult> first = beginHeldRightClick({1, 1});
    TaskHandle<ToolResult> second = m_scheduler.spawn(m_tools.mouseRightClick({2, 2}));
    settle();
    letGo();
    ASSERT_TRUE(waitUntil([&] { return first.done() && second.done(); }));
    const QStringList log = events();
    EXPECT_LT(log.indexOf(u"right up 1,1"_s), log.indexOf(u"warp 2,2"_s));
}

TEST_F(SequenceStopTest, EachSequenceThatIsCancelledWhileItWaitsPostsNothing)
{
    TaskHandle<ToolResult> first = beginHeldRightClick({1, 1});
    std::vector<TaskHandle<ToolResult>> waiting;
    const auto begin = [&](Task<ToolResult> task) { waiting.push_back(m_scheduler.spawn(std::move(task))); };
    begin(m_tools.clickAt({2, 2}));
    begin(m_tools.moveCursor({2, 2}));
    begin(m_tools.mouseDoubleClick({2, 2}));
    begin(m_tools.mouseRightClick({2, 2}));
    begin(m_tools.mouseDrag({2, 2}, {3, 3}));
    begin(m_tools.mouseScroll(3));
    begin(m_tools.typeText(u"abc"_s));
    begin(m_tools.pressKey(u"return"_s));
    settle();
    for (TaskHandle<ToolResult> &one : waiting)
        one.cancel();
    letGo();
    ASSERT_TRUE(waitUntil([&] {
        return first.done() &&
               std::all_of(waiting.begin(), waiting.end(), [](auto &one) { return one.done(); });
    }));
    for (TaskHandle<ToolResult> &one : waiting)
        EXPECT_EQ(one.result().text, u"Error: stopped before it was done."_s);
    // Looking at what lies there is no event.
    QStringList log = events();
    log.removeAll(u"look at 2,2"_s);
    EXPECT_EQ(log, QStringList({u"warp 1,1"_s, u"sleep 30"_s, u"right down 1,1"_s, u"sleep 50"_s,
                                u"right up 1,1"_s}));
}

TEST_F(SequenceStopTest, APasteThatIsStoppedIsNotToldAsDone)
{
    holdSleeps();
    TaskHandle<ToolResult> paste = m_scheduler.spawn(m_tools.pasteText(u"words"_s));
    ASSERT_TRUE(isHeld());
    paste.cancel();
    letGo();
    ASSERT_TRUE(waitUntil([&] { return paste.done(); }));
    EXPECT_EQ(paste.result().text, u"Error: stopped before it was done."_s);
    EXPECT_EQ(events().last(), u"release key 9"_s);
}

TEST_F(SequenceStopTest, TypingIntoAnElementEndsWhenOurOwnWindowComesForward)
{
    showElement(u"AXTextField"_s, u"Name"_s, false);
    m_desktop.elements->outcome = AccessibilityTree::Outcome::refused;
    holdSleeps([this] { return m_desktop.log.events().contains(u"up a"_s); });
    TaskHandle<ToolResult> typing = m_scheduler.spawn(m_tools.axType(1, u"abc"_s));
    ASSERT_TRUE(isHeld());
    m_tools.ownWindowCameForward();
    letGo();
    ASSERT_TRUE(waitUntil([&] { return typing.done(); }));
    EXPECT_EQ(typing.result().text,
              u"Error: typing was stopped, because the user turned to Morvane's window."_s);
    EXPECT_FALSE(events().contains(u"down b"_s));
}

TEST_F(SequenceStopTest, TypingEndsWhenOurOwnWindowComesForward)
{
    holdSleeps();
    TaskHandle<ToolResult> typing = m_scheduler.spawn(m_tools.typeText(u"abc"_s));
    ASSERT_TRUE(isHeld());
    m_tools.ownWindowCameForward();
    letGo();
    ASSERT_TRUE(waitUntil([&] { return typing.done(); }));
    EXPECT_EQ(typing.result().text,
              u"Error: typing was stopped, because the user turned to Morvane's window."_s);
    EXPECT_EQ(events().filter(u"down"_s).size(), 1);
    // What comes later is typed.
    EXPECT_EQ(run(m_tools.typeText(u"abc"_s)), u"Typed 3 characters."_s);
}

TEST_F(SequenceStopTest, AClickThatBringsOurOwnWindowForwardIsCompleted)
{
    TaskHandle<ToolResult> click = beginHeldRightClick({1, 1});
    m_tools.ownWindowCameForward();
    letGo();
    ASSERT_TRUE(waitUntil([&] { return click.done(); }));
    EXPECT_EQ(click.result().text, u"Right-clicked at (1, 1)."_s);
}

} // namespace
} // namespace morvane
