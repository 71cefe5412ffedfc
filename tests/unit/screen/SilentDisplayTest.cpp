#include "ScreenFixture.h"

#include "platform/DisplaySilent.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A display that a program holds, so that it answers nobody.
class SilentDisplayTest : public ScreenFixture {
protected:
    using Question = std::function<void(const std::stop_token &)>;

    /// `question` is what each question waits for.
    void makeSilent(const Question &question)
    {
        m_desktop.screen->onQuestion = question;
        m_desktop.applications->onQuestion = question;
        m_desktop.input->onQuestion = question;
        m_desktop.clipboard->onRead = question;
    }

    std::vector<Task<ToolResult>> tools()
    {
        std::vector<Task<ToolResult>> tools;
        tools.push_back(m_tools.captureScreen());
        tools.push_back(m_tools.clickAt({2, 2}));
        tools.push_back(m_tools.axClick(1));
        tools.push_back(m_tools.axType(1, u"a"_s));
        tools.push_back(m_tools.typeText(u"a"_s));
        tools.push_back(m_tools.pressKey(u"return"_s));
        tools.push_back(m_tools.moveCursor({2, 2}));
        tools.push_back(m_tools.mouseDoubleClick({2, 2}));
        tools.push_back(m_tools.mouseRightClick({2, 2}));
        tools.push_back(m_tools.mouseDrag({2, 2}, {3, 3}));
        tools.push_back(m_tools.mouseScroll(3));
        tools.push_back(m_tools.pasteText(u"a"_s));
        tools.push_back(m_tools.clipboardRead());
        tools.push_back(m_tools.frontmostApp());
        tools.push_back(m_tools.activateApp(u"Editor"_s));
        return tools;
    }
};

TEST_F(SilentDisplayTest, EachToolSaysSoAndHasDoneNothing)
{
    makeSilent([](const std::stop_token &) { throw DisplaySilent(); });
    for (Task<ToolResult> &tool : tools())
        EXPECT_EQ(run(std::move(tool)),
                  u"Error: the display does not answer, so it is not known how much of this "
                  u"was done. A program that hangs may be holding it. Ask the user to end "
                  u"that program, then run capture_screen before you go on."_s);
    EXPECT_EQ(events(), QStringList());
}

TEST_F(SilentDisplayTest, AStopEndsEachToolThatWaitsForIt)
{
    for (Task<ToolResult> &tool : tools()) {
        std::atomic<bool> isAsked = false;
        makeSilent([&](const std::stop_token &stop) {
            isAsked = true;
            while (!stop.stop_requested())
                std::this_thread::yield();
            throw DisplaySilent();
        });
        TaskHandle<ToolResult> waiting = m_scheduler.spawn(std::move(tool));
        ASSERT_TRUE(waitUntil([&] { return isAsked.load(); }));
        waiting.cancel();
        ASSERT_TRUE(waitUntil([&] { return waiting.done(); }));
        EXPECT_EQ(waiting.result().text, u"Error: stopped before it was done."_s);
    }
    EXPECT_EQ(events(), QStringList());
}

} // namespace
} // namespace morvane
