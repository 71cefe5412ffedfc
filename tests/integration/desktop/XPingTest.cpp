#include "platform/linux/desktop/XPing.h"

#include "support/WaitUntil.h"

#include <gtest/gtest.h>

namespace morvane {
namespace {

/// A program that answers when the test says so.
class XPingTest : public testing::Test {
protected:
    xcb_window_t newWindow(bool knowsPing = true)
    {
        xcb_connection_t *const connection = m_program->connection();
        const xcb_window_t window = xcb_generate_id(connection);
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, m_program->root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        const xcb_atom_t ping = m_program->atom("_NET_WM_PING");
        if (knowsPing)
            xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, m_program->atom("WM_PROTOCOLS"),
                                XCB_ATOM_ATOM, 32, 1, &ping);
        m_program->synchronize();
        return window;
    }

    void close(xcb_window_t window)
    {
        xcb_destroy_window(m_program->connection(), window);
        m_program->synchronize();
    }

    /// Answers the question that came first.
    void answerOne()
    {
        EXPECT_TRUE(waitUntil([this] {
            const auto event = xReply(xcb_poll_for_event(m_program->connection()));
            if (!event || (event->response_type & 0x7f) != XCB_CLIENT_MESSAGE)
                return false;
            auto answer = *reinterpret_cast<const xcb_client_message_event_t *>(event.get());
            answer.window = m_program->root();
            xcb_send_event(m_program->connection(), 0, m_program->root(),
                           XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                           reinterpret_cast<const char *>(&answer));
            return true;
        }));
        m_program->synchronize();
    }

    static bool becomes(XPing &ping, XPing::State state)
    {
        return waitUntil([&] { return ping.state() == state; });
    }

    const std::unique_ptr<XDisplay> m_program = XDisplay::open();
};

TEST_F(XPingTest, AllHaveToAnswer)
{
    const xcb_window_t one = newWindow();
    const xcb_window_t other = newWindow();
    XPing ping({one, other}, {});
    EXPECT_EQ(ping.state(), XPing::State::waiting);
    answerOne();
    EXPECT_EQ(ping.wait(std::chrono::milliseconds(0)), XPing::State::waiting);
    answerOne();
    EXPECT_TRUE(becomes(ping, XPing::State::answered));
}

TEST_F(XPingTest, TheLateAnswerToAnEarlierQuestionIsNone)
{
    const xcb_window_t window = newWindow();
    EXPECT_EQ(XPing({window}, {}).state(), XPing::State::waiting);
    XPing later({window}, {});
    XPing other({window}, {});
    answerOne();
    answerOne();
    EXPECT_TRUE(becomes(later, XPing::State::answered));
    EXPECT_EQ(other.state(), XPing::State::waiting);
}

TEST_F(XPingTest, WhatHasGoneOrGoesIsNotWaitedFor)
{
    const xcb_window_t gone = newWindow();
    close(gone);
    EXPECT_EQ(XPing({gone}, {}).state(), XPing::State::answered);
    const xcb_window_t window = newWindow();
    XPing ping({window}, {});
    EXPECT_EQ(ping.state(), XPing::State::waiting);
    close(window);
    EXPECT_TRUE(becomes(ping, XPing::State::answered));
}

TEST_F(XPingTest, WhoDoesNotKnowTheQuestionIsUnknownOnceTheOthersHaveAnswered)
{
    const xcb_window_t window = newWindow();
    XPing ping({newWindow(false), window}, {});
    EXPECT_EQ(ping.state(), XPing::State::waiting);
    answerOne();
    EXPECT_TRUE(becomes(ping, XPing::State::unknown));
}

} // namespace
} // namespace morvane
