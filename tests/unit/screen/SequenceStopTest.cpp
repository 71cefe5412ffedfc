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

    /// Another window has the keyboard from this event on.
    void moveKeyboardAfter(const QString &event, KeyboardHolder holder)
    {
        m_desktop.clock->onSleep = [this, event, holder] {
            if (events().contains(event))
                m_desktop.input->keyboardHolder = holder;
        };
    }

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

TEST_F(SequenceStopTest, AStopBetweenTwoTurnsOfTheWheelEndsTheScrolling)
{
    holdSleeps([this] { return m_desktop.log.events().count(u"sleep 12"_s) >= 3; });
    TaskHandle<ToolResult> handle = m_scheduler.spawn(m_tools.mouseScroll(3));
    ASSERT_TRUE(isHeld());
    handle.cancel();
    letGo();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(handle.result().text, u"Error: stopped before it was done."_s);
    EXPECT_EQ(events().count(u"scroll 36"_s), 3);
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
    // None of them waits for the first.
    const auto haveEnded = [&] {
        return std::all_of(waiting.begin(), waiting.end(), [](auto &one) { return one.done(); });
    };
    EXPECT_TRUE(waitUntil(haveEnded));
    EXPECT_FALSE(first.done());
    letGo();
    ASSERT_TRUE(waitUntil([&] { return first.done() && haveEnded(); }));
    for (TaskHandle<ToolResult> &one : waiting)
        EXPECT_EQ(one.result().text, u"Error: stopped before it was done."_s);
    // Looking at what lies there is no event.
    QStringList log = events();
    log.removeAll(u"look at 2,2"_s);
    EXPECT_EQ(log, QStringList({u"warp 1,1"_s, u"sleep 30"_s, u"right down 1,1"_s, u"sleep 50"_s,
                                u"right up 1,1"_s}));
}

TEST_F(SequenceStopTest, AStopEndsEachQuestionAboutAnElementThatWaits)
{
    auto &hooks = m_desktop.elements->onAsked;
    stopDuring(hooks[u"elementAt"_s], m_tools.clickAt({1, 1}));
    showElement(u"AXTextField"_s, u"Name"_s, true);
    stopDuring(hooks[u"press"_s], m_tools.axClick(1));
    stopDuring(hooks[u"setValue"_s], m_tools.axType(1, u"abc"_s));
    m_desktop.elements->outcome = AccessibilityTree::Outcome::refused;
    stopDuring(hooks[u"current"_s], m_tools.axClick(1));
    stopDuring(hooks[u"isCovered"_s], m_tools.axType(1, u"abc"_s));
    EXPECT_THAT(events().filter(u"down"_s), testing::IsEmpty());
}

TEST_F(SequenceStopTest, WhatIsStoppedBeforeItsFirstEventDoesNothingAtAll)
{
    showElement(u"AXTextField"_s, u"Name"_s, true);
    auto &hook = m_desktop.input->onQuestion;
    const QString stopped = u"Error: stopped before it was done."_s;
    EXPECT_EQ(stopDuring(hook, m_tools.axClick(1)), stopped);
    EXPECT_EQ(stopDuring(hook, m_tools.axType(1, u"abc"_s)), stopped);
    EXPECT_EQ(stopDuring(hook, m_tools.pasteText(u"abc"_s)), stopped);
    EXPECT_EQ(stopDuring(hook, m_tools.clickAt({1, 1})), stopped);
    EXPECT_EQ(events(), QStringList());
}

TEST_F(SequenceStopTest, AnElementThatWasNotToldBecauseOfTheStopIsNeitherClickedNorToldAsDone)
{
    showElement(u"AXTextField"_s, u"Name"_s, true);
    m_desktop.elements->outcome = AccessibilityTree::Outcome::stopped;
    EXPECT_EQ(run(m_tools.axClick(1)), u"Error: stopped before it was done."_s);
    EXPECT_EQ(run(m_tools.axType(1, u"abc"_s)), u"Error: stopped before it was done."_s);
    EXPECT_THAT(events().filter(u"down"_s), testing::IsEmpty());
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
    moveKeyboardAfter(u"up a"_s, KeyboardHolder::ownWindow);
    EXPECT_EQ(run(m_tools.axType(1, u"abc"_s)),
              u"Error: typing was stopped after 1 of 3 characters, because the user turned to Morvane's "
              "window."_s);
    EXPECT_FALSE(events().contains(u"down b"_s));
}

TEST_F(SequenceStopTest, TypingEndsAtTheNextCharacterWhenAnotherWindowIsGivenTheKeys)
{
    moveKeyboardAfter(u"up 😀"_s, KeyboardHolder::otherWindow);
    EXPECT_EQ(
        run(m_tools.typeText(u"é👩‍👧😀bc"_s)),
        u"Error: typing was stopped after 3 of 5 characters, because another window came to the front."_s);
    EXPECT_FALSE(events().contains(u"down b"_s));
    m_desktop.log.clear();
    // What comes later is typed, to whatever is in front then.
    m_desktop.input->keyboardHolder = KeyboardHolder::sameWindow;
    EXPECT_EQ(run(m_tools.typeText(u"abc"_s)), u"Typed 3 characters."_s);
}

TEST_F(SequenceStopTest, TypingWaitsForAProgramThatHasStillToReadAndForNoOther)
{
    m_desktop.input->unread = 3;
    EXPECT_EQ(run(m_tools.typeText(u"ab"_s)), u"Typed 2 characters."_s);
    EXPECT_EQ(events(),
              QStringList({u"prepare ab"_s, u"sleep 20"_s, u"sleep 20"_s, u"sleep 20"_s, u"down a"_s,
                           u"up a"_s, u"sleep 10"_s, u"down b"_s, u"up b"_s, u"sleep 10"_s}));
    m_desktop.input->unread = 3;
    moveKeyboardAfter(u"sleep 20"_s, KeyboardHolder::otherWindow);
    m_desktop.log.clear();
    EXPECT_EQ(
        run(m_tools.typeText(u"ab"_s)),
        u"Error: typing was stopped after 0 of 2 characters, because another window came to the front."_s);
    EXPECT_EQ(events().count(u"sleep 20"_s), 1);
}

TEST_F(SequenceStopTest, TypingEndsWhenTheProgramReadsNothingForTenSeconds)
{
    m_desktop.input->unread = 501;
    EXPECT_EQ(run(m_tools.typeText(u"ab"_s)),
              u"Error: typing was stopped after 0 of 2 characters, because the "
              "application in front does not read them."_s);
    EXPECT_EQ(events().count(u"sleep 20"_s), 500);
    m_desktop.input->unread = 499;
    EXPECT_EQ(run(m_tools.typeText(u"ab"_s)), u"Typed 2 characters."_s);
}

TEST_F(SequenceStopTest, AWindowThatTheLastCharacterOpensIsNoReasonToCallTheTextUntyped)
{
    moveKeyboardAfter(u"up \n"_s, KeyboardHolder::otherWindow);
    EXPECT_EQ(run(m_tools.typeText(u"abc\n"_s)), u"Typed 4 characters."_s);
}

TEST_F(SequenceStopTest, NothingIsTypedPressedOrPastedIntoOurOwnWindow)
{
    m_desktop.input->keyboardHolder = KeyboardHolder::ownWindow;
    const QString problem =
        u"Error: nothing was typed, because Morvane's own window is in front. Bring the "
        "application that it is meant for to the front with activate_app, then try again. A page in "
        "Morvane's own "
        "browser is worked with the browser tools, such as browser_type and browser_click."_s;
    EXPECT_EQ(run(m_tools.typeText(u"abc"_s)), problem);
    EXPECT_EQ(run(m_tools.pressKey(u"return"_s)), problem);
    EXPECT_EQ(run(m_tools.pasteText(u"abc"_s)), problem);
    EXPECT_EQ(events(), QStringList());
    // What is wrong with the call itself is told first.
    EXPECT_EQ(run(m_tools.typeText({})), u"Error: nothing to type."_s);
    EXPECT_EQ(run(m_tools.pasteText(u" \n"_s)), u"Error: nothing to paste."_s);
    EXPECT_EQ(run(m_tools.pressKey(u"command+"_s)), u"Error: no key was given."_s);
}

TEST_F(SequenceStopTest, OurOwnWindowThatComesForwardBetweenCopyingAndPastingIsNotPastedInto)
{
    m_desktop.clipboard->onSet = [this] { m_desktop.input->keyboardHolder = KeyboardHolder::ownWindow; };
    EXPECT_TRUE(run(m_tools.pasteText(u"abc"_s)).startsWith(u"Error: nothing was typed"_s));
    EXPECT_THAT(events().filter(u"key"_s), testing::IsEmpty());
}

TEST_F(SequenceStopTest, AFieldOfOurOwnWindowIsNeitherSetNorClickedWhicheverWindowIsInFront)
{
    showElement(u"AXTextArea"_s, u"Message"_s, true);
    m_desktop.elements->own = true;
    for (const auto outcome : {AccessibilityTree::Outcome::done, AccessibilityTree::Outcome::refused}) {
        m_desktop.elements->outcome = outcome;
        EXPECT_TRUE(run(m_tools.axType(1, u"abc"_s))
                        .startsWith(u"Error: nothing was typed, because element [1] is in Morvane's own "
                                    "window. Bring the application that it is meant for to the front"_s));
    }
    EXPECT_EQ(events(), QStringList());
    EXPECT_EQ(run(m_tools.axType(1, {})), u"Error: nothing to type."_s);
}

TEST_F(SequenceStopTest, AClickIntoOurOwnWindowIsMade)
{
    m_desktop.input->keyboardHolder = KeyboardHolder::ownWindow;
    EXPECT_EQ(run(m_tools.mouseRightClick({1, 1})), u"Right-clicked at (1, 1)."_s);
}

} // namespace
} // namespace morvane
