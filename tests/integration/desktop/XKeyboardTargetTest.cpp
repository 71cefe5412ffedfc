#include "platform/linux/desktop/XKeyboardTarget.h"

#include "support/WaitUntil.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace morvane {
namespace {

/// A window with a frame around it, as window managers make them, that the real one leaves alone.
class XKeyboardTargetTest : public testing::Test {
protected:
    XKeyboardTargetTest()
    {
        const uint32_t state = 1;
        xcb_change_property(m_program->connection(), XCB_PROP_MODE_REPLACE, m_window,
                            m_program->atom("WM_STATE"), XCB_ATOM_CARDINAL, 32, 1, &state);
    }

    /// Waits until the window manager has taken back the keyboard that goes with the windows, so that it
    /// takes it from no other test.
    void TearDown() override
    {
        m_program.reset();
        const std::unique_ptr<XDisplay> display = XDisplay::open();
        ASSERT_TRUE(display);
        EXPECT_TRUE(waitUntil([&] {
            const auto now =
                display->reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(display->connection()));
            return now && now->focus != XCB_NONE && now->focus != XCB_INPUT_FOCUS_POINTER_ROOT &&
                   now->focus != display->root() && display->exists(now->focus) && !display->exists(m_window);
        }));
    }

    xcb_window_t newWindow(xcb_window_t around)
    {
        xcb_connection_t *const connection = m_program->connection();
        const xcb_window_t window = xcb_generate_id(connection);
        const uint32_t isLeftAlone = 1;
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, around, 0, 0, 100, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                          &isLeftAlone);
        xcb_map_window(connection, window);
        return window;
    }

    void giveKeyboardTo(xcb_window_t window)
    {
        EXPECT_TRUE(waitUntil([&] {
            xcb_set_input_focus(m_program->connection(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
            const auto now =
                m_program->reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_program->connection()));
            return now && now->focus == window;
        }));
    }

    std::unique_ptr<XDisplay> m_program = XDisplay::open();
    const xcb_window_t m_frame = newWindow(m_program->root());
    const xcb_window_t m_window = newWindow(m_frame);
};

TEST_F(XKeyboardTargetTest, AWindowThatLeavesTheKeyboardToItsFrameIsGivenNoMore)
{
    giveKeyboardTo(m_window);
    XKeyboardTarget target(*m_program);
    EXPECT_EQ(target.holder(), KeyboardHolder::sameWindow);
    giveKeyboardTo(m_frame);
    EXPECT_EQ(target.holder(), KeyboardHolder::otherWindow);
    giveKeyboardTo(m_window);
    EXPECT_EQ(target.holder(), KeyboardHolder::sameWindow);
}

TEST_F(XKeyboardTargetTest, AWindowOfOurOwnIsToldAsSuchWhateverItsFrameSays)
{
    const auto own = uint32_t(::getpid());
    xcb_change_property(m_program->connection(), XCB_PROP_MODE_REPLACE, m_window,
                        m_program->atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &own);
    // The window manager may still have to give the keyboard of another test before to somebody.
    EXPECT_TRUE(waitUntil([&] {
        giveKeyboardTo(m_window);
        return XKeyboardTarget(*m_program).holder() == KeyboardHolder::ownWindow;
    }));
}

TEST_F(XKeyboardTargetTest, AFrameThatHadTheKeyboardFromTheBeginningIsTheWindowThatIsMeant)
{
    giveKeyboardTo(m_frame);
    XKeyboardTarget target(*m_program);
    EXPECT_EQ(target.holder(), KeyboardHolder::sameWindow);
}

TEST_F(XKeyboardTargetTest, AWindowWithinAnotherOfTheSameProgramIsStillTheSame)
{
    const xcb_window_t field = newWindow(m_window);
    giveKeyboardTo(m_window);
    XKeyboardTarget target(*m_program);
    giveKeyboardTo(field);
    EXPECT_EQ(target.holder(), KeyboardHolder::sameWindow);
    giveKeyboardTo(newWindow(m_program->root()));
    EXPECT_EQ(target.holder(), KeyboardHolder::otherWindow);
}

} // namespace
} // namespace morvane
