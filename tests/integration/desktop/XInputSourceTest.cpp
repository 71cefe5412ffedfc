#include "platform/linux/desktop/XInputSource.h"

#include "platform/linux/desktop/LinuxApplications.h"
#include "platform/linux/desktop/LinuxClipboard.h"
#include "platform/linux/desktop/LinuxInputEvents.h"
#include "platform/linux/desktop/LinuxScreenCapture.h"
#include "support/WaitUntil.h"
#include "support/XConnection.h"

#include <QRegularExpression>
#include <QStringList>
#include <array>
#include <gmock/gmock.h>
#include <limits>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using testing::Contains;
using testing::ElementsAre;

constexpr quint32 command = 0x100000;
constexpr quint32 control = 0x40000;
constexpr quint32 shift = 0x20000;
constexpr quint32 option = 0x80000;
constexpr quint32 function = 0x800000;

void type(InputSource &source, const QString &text)
{
    source.prepareText(text);
    for (const char32_t character : text.toStdU32String()) {
        source.characterDown(character);
        source.characterUp(character);
    }
}

/// A window that has the keyboard and lies under the pointer, and what reaches it.
class XInputSourceTest : public testing::Test {
protected:
    XInputSourceTest()
    {
        xcb_connection_t *const connection = m_desktop.handle();
        m_window = xcb_generate_id(connection);
        // The window manager is to leave it alone.
        const std::array<uint32_t, 2> values{
            1, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_BUTTON_PRESS |
                   XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_BUTTON_MOTION};
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, m_desktop.root(), 0, 0, 600, 600, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
        xcb_map_window(connection, m_window);
        // Whatever the window manager makes of the focus.
        EXPECT_TRUE(waitUntil([&] {
            const auto grab =
                xReply(xcb_grab_keyboard_reply(connection,
                                               xcb_grab_keyboard(connection, 0, m_window, XCB_CURRENT_TIME,
                                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                                               nullptr));
            return grab && grab->status == XCB_GRAB_STATUS_SUCCESS;
        }));
        newSource()->warp({100, 100});
    }

    static std::unique_ptr<InputSource> newSource() { return LinuxInputEvents().newSource({}); }

    static uint8_t keyOf(xkb_keysym_t symbol)
    {
        return XKeyboard::read(*XDisplay::open())->keyFor(symbol).value_or(XKey()).code;
    }

    /// What the user's own hand does.
    void userSends(uint8_t type, uint8_t detail)
    {
        xcb_test_fake_input(m_desktop.handle(), type, detail, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        m_desktop.activeWindow();
        received();
    }

    uint16_t modifiersNow() const
    {
        xcb_connection_t *const connection = m_desktop.handle();
        const auto pointer = xReply(
            xcb_query_pointer_reply(connection, xcb_query_pointer(connection, m_desktop.root()), nullptr));
        return pointer->mask;
    }

    /// All that has come since the last question. The server has dealt with what sources posted that are
    /// gone.
    QStringList received()
    {
        m_desktop.activeWindow();
        QStringList events;
        while (const auto event = xReply(xcb_poll_for_event(m_desktop.handle()))) {
            const auto *const key = reinterpret_cast<const xcb_key_press_event_t *>(event.get());
            const QString modifiers = u" with "_s + QString::number(key->state & 0xff, 16);
            const QString place = u" at %1,%2"_s.arg(key->root_x).arg(key->root_y);
            switch (event->response_type & 0x7f) {
            case XCB_KEY_PRESS:
                events.append(u"key %1"_s.arg(key->detail) + modifiers);
                break;
            case XCB_KEY_RELEASE:
                events.append(u"up %1"_s.arg(key->detail));
                break;
            case XCB_BUTTON_PRESS:
                events.append(u"button %1"_s.arg(key->detail) + modifiers + place);
                break;
            case XCB_BUTTON_RELEASE:
                events.append(u"let go of %1"_s.arg(key->detail) + place);
                break;
            case XCB_MOTION_NOTIFY:
                events.append(u"drag"_s + place);
                break;
            default:
                break;
            }
        }
        return events;
    }

    /// The presses alone.
    QStringList pressed() { return received().filter(QRegularExpression(u"^(key|button)"_s)); }

    QString lastPressed()
    {
        const QStringList presses = pressed();
        return presses.isEmpty() ? QString() : presses.last();
    }

    static QString key(xkb_keysym_t symbol, int modifiers = 0)
    {
        return u"key %1 with %2"_s.arg(keyOf(symbol)).arg(modifiers, 0, 16);
    }

    XConnection m_desktop{qEnvironmentVariable("DISPLAY")};
    xcb_window_t m_window = XCB_NONE;
};

TEST_F(XInputSourceTest, CommandAndControlAreTheControlKeyOptionIsAltAndFnIsNone)
{
    constexpr int letterA = 0;
    for (const auto &[flags, modifiers] : {std::pair{command, XCB_MOD_MASK_CONTROL},
                                           {control, XCB_MOD_MASK_CONTROL},
                                           {shift, XCB_MOD_MASK_SHIFT},
                                           {option, XCB_MOD_MASK_1},
                                           {function, xcb_mod_mask_t{}}}) {
        {
            const auto source = newSource();
            source->keyDown(letterA, flags);
            source->keyUp(letterA, flags);
        }
        EXPECT_EQ(lastPressed(), key(XKB_KEY_a, modifiers));
        EXPECT_EQ(modifiersNow(), 0);
    }
    newSource()->keyDown(letterA, command | shift | option);
    EXPECT_EQ(lastPressed(), key(XKB_KEY_a, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_1));
    EXPECT_EQ(modifiersNow(), 0);
}

TEST_F(XInputSourceTest, EachNamedKeyIsTheOneThatTheKeyboardHas)
{
    const std::pair<int, xkb_keysym_t> keys[] = {
        {36, XKB_KEY_Return}, {48, XKB_KEY_Tab},   {49, XKB_KEY_space},  {51, XKB_KEY_BackSpace},
        {53, XKB_KEY_Escape}, {115, XKB_KEY_Home}, {116, XKB_KEY_Prior}, {119, XKB_KEY_End},
        {121, XKB_KEY_Next},  {123, XKB_KEY_Left}, {124, XKB_KEY_Right}, {125, XKB_KEY_Down},
        {126, XKB_KEY_Up},    {0, XKB_KEY_a},      {6, XKB_KEY_z},       {29, XKB_KEY_0}};
    for (const auto &[code, symbol] : keys) {
        newSource()->keyDown(code, 0);
        EXPECT_EQ(received(), QStringList({key(symbol), u"up %1"_s.arg(keyOf(symbol))})) << code;
    }
}

TEST_F(XInputSourceTest, AModifierThatTheUserHoldsIsNotMixedIn)
{
    for (const xkb_keysym_t held : {XKB_KEY_Shift_L, XKB_KEY_Control_R, XKB_KEY_Alt_L, XKB_KEY_Super_L}) {
        const uint8_t code = keyOf(held);
        ASSERT_NE(code, 0);
        userSends(XCB_KEY_PRESS, code);
        {
            const auto source = newSource();
            type(*source, u"a"_s);
        }
        EXPECT_THAT(pressed(), ElementsAre(key(XKB_KEY_a))) << held;
        userSends(XCB_KEY_RELEASE, code);
        userSends(XCB_KEY_PRESS, code);
        newSource()->keyDown(36, 0);
        EXPECT_THAT(pressed(), ElementsAre(key(XKB_KEY_Return))) << held;
        userSends(XCB_KEY_RELEASE, code);
        userSends(XCB_KEY_PRESS, code);
        newSource()->buttonDown(MouseButton::left, {100, 100});
        EXPECT_THAT(pressed(), ElementsAre(u"button 1 with 0 at 100,100"_s)) << held;
        userSends(XCB_KEY_RELEASE, code);
        userSends(XCB_KEY_PRESS, code);
        newSource()->scroll(96);
        EXPECT_THAT(pressed(), ElementsAre(u"button 4 with 0 at 100,100"_s)) << held;
        userSends(XCB_KEY_RELEASE, code);
    }
    EXPECT_EQ(modifiersNow(), 0);
}

TEST_F(XInputSourceTest, CapsLockChangesNothingOfATextAndIsOnAgainAfterwards)
{
    const uint8_t caps = keyOf(XKB_KEY_Caps_Lock);
    userSends(XCB_KEY_PRESS, caps);
    userSends(XCB_KEY_RELEASE, caps);
    ASSERT_EQ(modifiersNow(), XCB_MOD_MASK_LOCK);
    {
        const auto source = newSource();
        type(*source, u"aB"_s);
    }
    EXPECT_EQ(modifiersNow(), XCB_MOD_MASK_LOCK);
    const QStringList typed = pressed();
    userSends(XCB_KEY_PRESS, caps);
    userSends(XCB_KEY_RELEASE, caps);
    EXPECT_EQ(modifiersNow(), 0);
    const QString toggle = u"key %1 with "_s.arg(caps);
    EXPECT_EQ(typed, QStringList({toggle + u"2"_s, key(XKB_KEY_a), key(XKB_KEY_Shift_L),
                                  key(XKB_KEY_b, XCB_MOD_MASK_SHIFT), toggle + u"0"_s}));
}

TEST_F(XInputSourceTest, CapsLockChangesNoKeyAndNumLockNeitherKeyNorText)
{
    for (const xkb_keysym_t lock : {XKB_KEY_Caps_Lock, XKB_KEY_Num_Lock}) {
        const auto userPresses = [&] {
            userSends(XCB_KEY_PRESS, keyOf(lock));
            userSends(XCB_KEY_RELEASE, keyOf(lock));
        };
        userPresses();
        const uint16_t locked = modifiersNow();
        ASSERT_NE(locked, 0);
        const int others = locked & ~XCB_MOD_MASK_LOCK;
        constexpr int letterA = 0;
        newSource()->keyDown(letterA, 0);
        EXPECT_THAT(pressed(), Contains(key(XKB_KEY_a, others)));
        newSource()->keyDown(115, shift);
        EXPECT_THAT(pressed(), Contains(key(XKB_KEY_Home, others | XCB_MOD_MASK_SHIFT)));
        type(*newSource(), u"7"_s);
        EXPECT_THAT(pressed(), Contains(key(XKB_KEY_7, others)));
        EXPECT_EQ(modifiersNow(), locked);
        userPresses();
    }
    EXPECT_EQ(modifiersNow(), 0);
}

TEST_F(XInputSourceTest, CapsLockThatTheUserPressesInMidWordChangesTheRestOfItAsLittle)
{
    const uint8_t caps = keyOf(XKB_KEY_Caps_Lock);
    const auto userPressesCaps = [&] {
        userSends(XCB_KEY_PRESS, caps);
        userSends(XCB_KEY_RELEASE, caps);
    };
    for (const uint16_t wanted : {uint16_t(XCB_MOD_MASK_LOCK), uint16_t(0)}) {
        {
            const auto source = newSource();
            source->prepareText(u"aa"_s);
            source->characterDown(U'a');
            source->characterUp(U'a');
            userPressesCaps();
            source->characterDown(U'a');
            source->characterUp(U'a');
            EXPECT_THAT(pressed(), Contains(key(XKB_KEY_a)));
        }
        EXPECT_EQ(modifiersNow(), wanted) << "as the user has it by now";
    }
}

TEST_F(XInputSourceTest, ALineEndOfTwoCharactersIsOneKeyAndControlCharactersWithoutAKeyAreNone)
{
    {
        const auto source = newSource();
        type(*source, u"a\r\nb\n\n\a\t\b\x1b\x7f"_s + u'c');
    }
    EXPECT_THAT(pressed(),
                ElementsAre(key(XKB_KEY_a), key(XKB_KEY_Return), key(XKB_KEY_b), key(XKB_KEY_Return),
                            key(XKB_KEY_Return), key(XKB_KEY_Tab), key(XKB_KEY_BackSpace),
                            key(XKB_KEY_Escape), key(XKB_KEY_Delete), key(XKB_KEY_c)));
}

TEST_F(XInputSourceTest, TheLeftButtonIsTheOneThatALeftHandedUserClicksWith)
{
    xcb_connection_t *const connection = m_desktop.handle();
    const std::array<uint8_t, 10> swapped{3, 2, 1, 4, 5, 6, 7, 8, 9, 10};
    const std::array<uint8_t, 10> usual{1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    const auto set = [connection](const std::array<uint8_t, 10> &map) {
        return xReply(xcb_set_pointer_mapping_reply(
                          connection, xcb_set_pointer_mapping(connection, uint8_t(map.size()), map.data()),
                          nullptr))
            ->status;
    };
    ASSERT_EQ(set(swapped), XCB_MAPPING_STATUS_SUCCESS);
    newSource()->buttonDown(MouseButton::left, {100, 100});
    newSource()->buttonDown(MouseButton::right, {100, 100});
    const QStringList seen = pressed();
    EXPECT_EQ(set(usual), XCB_MAPPING_STATUS_SUCCESS);
    EXPECT_THAT(seen, ElementsAre(u"button 1 with 0 at 100,100"_s, u"button 3 with 0 at 100,100"_s));
}

TEST_F(XInputSourceTest, ASourceThatGoesInMidDragLetsGoOfTheButtonWhereItIs)
{
    {
        const auto source = newSource();
        source->buttonDown(MouseButton::left, {100, 100});
        source->dragged({110, 120});
    }
    EXPECT_THAT(received(), ElementsAre(u"button 1 with 0 at 100,100"_s, u"drag at 110,120"_s,
                                        u"let go of 1 at 110,120"_s));
}

TEST_F(XInputSourceTest, AButtonIsPressedAtItsPointWhereverTheUserHasMovedThePointer)
{
    {
        const auto source = newSource();
        source->warp({100, 100});
        newSource()->mouseMoved({300, 200});
        source->buttonDown(MouseButton::left, {100, 100});
        source->dragged({110, 100});
        newSource()->mouseMoved({300, 200});
        source->buttonUp(MouseButton::left, {120, 100});
    }
    EXPECT_THAT(received(),
                ElementsAre(u"button 1 with 0 at 100,100"_s, u"drag at 110,100"_s, u"drag at 300,200"_s,
                            u"drag at 120,100"_s, u"let go of 1 at 120,100"_s));
}

TEST_F(XInputSourceTest, AButtonIsLetGoOfAtItsPoint)
{
    {
        const auto source = newSource();
        source->buttonDown(MouseButton::left, {100, 100});
        source->buttonUp(MouseButton::left, {130, 140});
    }
    EXPECT_THAT(received(), ElementsAre(u"button 1 with 0 at 100,100"_s, u"drag at 130,140"_s,
                                        u"let go of 1 at 130,140"_s));
}

TEST_F(XInputSourceTest, EightEventsOfTwelvePixelsAreOneNotchOfTheWheel)
{
    for (const auto &[pixels, wheel, notches] :
         {std::tuple{12, 4, 1}, {-12, 5, 1}, {36, 4, 3}, {-96, 5, 8}, {0, 4, 0}}) {
        {
            const auto source = newSource();
            for (int event = 0; event < 8; ++event)
                source->scroll(pixels);
        }
        EXPECT_EQ(pressed(), QStringList(notches, u"button %1 with 0 at 100,100"_s.arg(wheel))) << pixels;
    }
}

TEST_F(XInputSourceTest, AnEndlessScrollHasALimit)
{
    {
        const auto source = newSource();
        source->scroll(std::numeric_limits<int>::max());
        source->scroll(std::numeric_limits<int>::min());
    }
    const QStringList seen = pressed();
    EXPECT_EQ(seen.count(u"button 4 with 0 at 100,100"_s), 100);
    EXPECT_EQ(seen.count(u"button 5 with 0 at 100,100"_s), 100);
}

TEST(WithoutAnXServerTest, NothingIsAllowedOrKnownAndWhatIsPostedGoesNowhere)
{
    for (const auto &[name, value] : {std::pair{"WAYLAND_DISPLAY", "wayland-0"}, {"DISPLAY", ":none"}}) {
        const QByteArray before = qgetenv(name);
        qputenv(name, value);
        EXPECT_FALSE(LinuxInputEvents().isTrusted({})) << name;
        EXPECT_TRUE(LinuxInputEvents().layoutCharacters().isEmpty()) << name;
        EXPECT_FALSE(LinuxScreenCapture().isGranted({})) << name;
        EXPECT_TRUE(LinuxScreenCapture().displays({}).isEmpty()) << name;
        EXPECT_TRUE(LinuxScreenCapture().capture({0, 0, 10, 10}, {}).isNull()) << name;
        EXPECT_EQ(LinuxApplications().frontmost({}), std::nullopt) << name;
        EXPECT_TRUE(LinuxApplications().running({}).isEmpty()) << name;
        EXPECT_EQ(LinuxClipboard().text({}), std::nullopt) << name;
        const auto source = LinuxInputEvents().newSource({});
        source->warp({1, 1});
        source->buttonDown(MouseButton::left, {1, 1});
        type(*source, u"ab"_s);
        before.isNull() ? qunsetenv(name) : qputenv(name, before);
    }
    EXPECT_TRUE(LinuxInputEvents().isTrusted({}));
    EXPECT_TRUE(LinuxScreenCapture().isGranted({}));
}

} // namespace
} // namespace morvane
