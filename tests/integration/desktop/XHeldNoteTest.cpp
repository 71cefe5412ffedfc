#include "platform/linux/desktop/XHeldNote.h"

#include "platform/linux/desktop/LinuxInputEvents.h"
#include "platform/linux/desktop/XInputSource.h"
#include "support/WaitUntil.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace morvane {
namespace {

constexpr quint32 shift = 0x20000;

class XHeldNoteTest : public testing::Test {
protected:
    XHeldNoteTest()
    {
        // A button that goes down on the desktop itself opens the menu of the window manager, which stays.
        xcb_connection_t *const connection = m_display->connection();
        const xcb_window_t window = xcb_generate_id(connection);
        const uint32_t isLeftAlone = 1;
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, m_display->root(), 0, 0, 200, 200, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT,
                          &isLeftAlone);
        xcb_map_window(connection, window);
        m_display->synchronize();
    }

    /// Modifiers and buttons that are down.
    uint16_t held() const
    {
        return m_display
            ->reply<xcb_query_pointer_reply_t>(xcb_query_pointer(m_display->connection(), m_display->root()))
            ->mask;
    }
    bool isNoted() const { return !m_display->values(m_display->root(), "_MORVANE_HOLDS_KEYS").isEmpty(); }
    uint8_t shiftKey() const
    {
        return XKeyboard::read(*m_display)->keyFor(XKB_KEY_Shift_L).value_or(XKey()).code;
    }
    /// What the user's own hand does.
    void userSends(uint8_t type, uint8_t detail) const
    {
        xcb_test_fake_input(m_display->connection(), type, detail, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        m_display->synchronize();
    }
    /// Another Morvane that comes to use mouse and keyboard.
    static void startAgain() { LinuxInputEvents().newSource({}); }
    /// Loses the connection in the middle of what `press` does.
    static void crash(const std::function<void(InputSource &)> &press)
    {
        auto display = XDisplay::open();
        const int socket = xcb_get_file_descriptor(display->connection());
        XInputSource crashed(std::move(display));
        press(crashed);
        // By then the server has read all of it.
        EXPECT_EQ(crashed.keyboardHolder(), KeyboardHolder::sameWindow);
        ::shutdown(socket, SHUT_RDWR);
    }

    /// As the user has them from the first on.
    void setButtons(const std::array<uint8_t, 10> &map) const
    {
        const auto set = m_display->reply<xcb_set_pointer_mapping_reply_t>(
            xcb_set_pointer_mapping(m_display->connection(), uint8_t(map.size()), map.data()));
        EXPECT_EQ(set->status, XCB_MAPPING_STATUS_SUCCESS);
    }

    const std::unique_ptr<XDisplay> m_display = XDisplay::open();
};

TEST_F(XHeldNoteTest, WhatACrashHasLeftDownIsLetGoOfBeforeAnythingIsPressedAgain)
{
    crash([](InputSource &source) { source.keyDown(0, shift); });
    ASSERT_EQ(held(), XCB_MOD_MASK_SHIFT);
    // The server may still have to see the end of the connection.
    EXPECT_TRUE(waitUntil([&] {
        startAgain();
        return held() == 0;
    }));
    EXPECT_FALSE(isNoted());
}

TEST_F(XHeldNoteTest, ThatHoldsForButtonsToo)
{
    for (const MouseButton button : {MouseButton::left, MouseButton::right}) {
        crash([&](InputSource &source) { source.buttonDown(button, {100, 100}); });
        ASSERT_EQ(held(), button == MouseButton::left ? XCB_BUTTON_MASK_1 : XCB_BUTTON_MASK_3);
        EXPECT_TRUE(waitUntil([&] {
            startAgain();
            return held() == 0;
        }));
    }
}

TEST_F(XHeldNoteTest, AndForThoseOfALeftHandedUser)
{
    setButtons({3, 2, 1, 4, 5, 6, 7, 8, 9, 10});
    crash([&](InputSource &source) { source.buttonDown(MouseButton::left, {100, 100}); });
    EXPECT_EQ(held(), XCB_BUTTON_MASK_1);
    const bool isLetGoOf = waitUntil([&] {
        startAgain();
        return held() == 0;
    });
    for (const uint8_t physical : {1, 3})
        userSends(XCB_BUTTON_RELEASE, physical);
    setButtons({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    EXPECT_TRUE(isLetGoOf);
}

TEST_F(XHeldNoteTest, WhatASequenceHoldsIsItsOwnAffair)
{
    {
        XInputSource source(XDisplay::open());
        source.keyDown(0, shift);
        startAgain();
        EXPECT_EQ(held(), XCB_MOD_MASK_SHIFT);
        EXPECT_TRUE(isNoted());
    }
    EXPECT_EQ(held(), 0);
    EXPECT_FALSE(isNoted());
}

TEST_F(XHeldNoteTest, WhatTheUserHoldsIsTheUsersAffair)
{
    userSends(XCB_KEY_PRESS, shiftKey());
    startAgain();
    EXPECT_EQ(held(), XCB_MOD_MASK_SHIFT);
    userSends(XCB_KEY_RELEASE, shiftKey());
}

} // namespace
} // namespace morvane
