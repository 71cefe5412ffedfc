#include "platform/linux/desktop/ScreenWindows.h"

#include "support/WaitUntil.h"
#include "support/XConnection.h"

#include <gtest/gtest.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr uint32_t process = 1'000'000'000;
const QString title = u"Home"_s;

/// Windows of one program that all have the same title.
class ScreenWindowsTest : public testing::Test {
protected:
    ~ScreenWindowsTest() override
    {
        for (const xcb_window_t window : std::as_const(m_open))
            xcb_destroy_window(m_program.handle(), window);
        // The next test is not to meet them.
        EXPECT_TRUE(
            waitUntil([this] { return m_program.property(m_program.root(), "_NET_CLIENT_LIST").isEmpty(); }));
    }

    /// Comes to the front.
    xcb_window_t open(int16_t left)
    {
        const xcb_window_t window = m_program.openWindow();
        m_open.append(window);
        const auto set = [&](xcb_atom_t name, xcb_atom_t type, uint8_t format, uint32_t size,
                             const void *value) {
            xcb_change_property(m_program.handle(), XCB_PROP_MODE_REPLACE, window, name, type, format, size,
                                value);
        };
        set(m_program.atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &process);
        set(XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, uint32_t(title.size()), title.toUtf8().constData());
        EXPECT_TRUE(waitUntil([&] { return m_program.activeWindow() == window; }));
        const uint32_t place[] = {uint32_t(left), 100};
        xcb_configure_window(m_program.handle(), window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, place);
        xcb_flush(m_program.handle());
        EXPECT_TRUE(waitUntil([&] { return frameOf(window).left() >= left; }));
        return window;
    }

    QRect frameOf(xcb_window_t window) const { return m_display->geometry(window); }

    /// The window that the program means, which it tells as it does.
    xcb_window_t find(bool isGtk4, QRectF extents, bool isActive) const
    {
        return ScreenWindows(m_display.get()).find({process, isGtk4, title, extents, isActive})->id;
    }

    QList<xcb_window_t> m_open;
    const XConnection m_program{qEnvironmentVariable("DISPLAY")};
    const std::unique_ptr<XDisplay> m_display = XDisplay::open();
};

TEST_F(ScreenWindowsTest, OfWindowsWithOneTitleTheOneThatIsNotInFrontIsAnother)
{
    const QRectF inside(0, 0, 400, 300);
    const xcb_window_t only = open(500);
    EXPECT_EQ(find(true, inside, false), only) << "which may have come to the front just now";
    const xcb_window_t front = open(10);
    for (const bool isGtk4 : {true, false}) {
        EXPECT_EQ(find(isGtk4, inside, true), front);
        EXPECT_EQ(find(isGtk4, inside, false), only);
    }
}

TEST_F(ScreenWindowsTest, OfSeveralBehindItTheOneThatIsWhereItIsToldIsMeantOrNone)
{
    const xcb_window_t left = open(10);
    const xcb_window_t right = open(800);
    open(400);
    EXPECT_EQ(find(false, frameOf(left), false), left);
    EXPECT_EQ(find(false, frameOf(right), false), right);
    EXPECT_EQ(find(true, {0, 0, 400, 300}, false), xcb_window_t(XCB_NONE));
}

} // namespace
} // namespace morvane
