#include "platform/linux/LinuxWindowRaiser.h"

#include "support/WaitUntil.h"
#include "support/XConnection.h"
#include "ui/sheets/UnaskedDialog.h"

#include <QDialog>
#include <QWidget>
#include <QWindow>
#include <gtest/gtest.h>

namespace morvane {
namespace {

class LinuxWindowRaiserTest : public testing::Test {
protected:
    LinuxWindowRaiserTest()
    {
        m_window.resize(300, 200);
        m_window.show();
        EXPECT_TRUE(waitUntil([&] { return isOnTop(id()); }));
    }

    xcb_window_t id() const { return xcb_window_t(m_window.winId()); }
    bool isActive(xcb_window_t window) const { return m_connection.activeWindow() == window; }

    /// Whether the window is the last of the stacking order, which lists the topmost last.
    bool isOnTop(xcb_window_t window) const
    {
        const auto order = m_connection.property(m_connection.root(), "_NET_CLIENT_LIST_STACKING");
        return !order.isEmpty() && order.last() == window;
    }

    /// A window of another program that covers ours and has the focus.
    void cover(const XConnection &foreign) const
    {
        const xcb_window_t other = foreign.openWindow();
        ASSERT_TRUE(waitUntil([&] { return isActive(other) && isOnTop(other); }));
    }

    const XConnection m_connection{qEnvironmentVariable("DISPLAY")};
    QWidget m_window;
    LinuxWindowRaiser m_raiser;
};

TEST_F(LinuxWindowRaiserTest, ActivatingBringsACoveredWindowUpWithTheFocus)
{
    const XConnection foreign(qEnvironmentVariable("DISPLAY"));
    cover(foreign);
    m_raiser.activate(*m_window.windowHandle(), {});
    EXPECT_TRUE(waitUntil([&] { return isActive(id()) && isOnTop(id()); }));
}

TEST_F(LinuxWindowRaiserTest, ActivatingBringsAMinimizedWindowBack)
{
    constexpr uint32_t normal = 1;
    constexpr uint32_t iconic = 3;
    const auto state = [this] { return m_connection.property(id(), "WM_STATE").value(0); };
    ASSERT_TRUE(waitUntil([&] { return state() == normal; }));
    m_window.showMinimized();
    ASSERT_TRUE(waitUntil([&] { return state() == iconic && !m_window.windowHandle()->isExposed(); }));
    m_raiser.activate(*m_window.windowHandle(), {"launcher_TIME0", {}});
    EXPECT_TRUE(waitUntil([&] { return isActive(id()) && isOnTop(id()); }));
    EXPECT_TRUE(waitUntil([&] { return state() == normal && m_window.windowHandle()->isExposed(); }));
}

TEST_F(LinuxWindowRaiserTest, ActivatingShowsAWindowThatWasNeverShown)
{
    QWidget late;
    late.winId();
    m_raiser.activate(*late.windowHandle(), {});
    EXPECT_TRUE(waitUntil([&] { return late.isVisible() && isActive(xcb_window_t(late.winId())); }));
}

TEST_F(LinuxWindowRaiserTest, RaisingLeavesTheFocusWhereItIs)
{
    QWidget browser;
    browser.setAttribute(Qt::WA_ShowWithoutActivating);
    browser.show();
    const XConnection foreign(qEnvironmentVariable("DISPLAY"));
    cover(foreign);
    m_raiser.activate(*m_window.windowHandle(), {});
    ASSERT_TRUE(waitUntil([&] { return isActive(id()) && isOnTop(id()); }));
    m_raiser.raiseWithoutFocus(*browser.windowHandle());
    EXPECT_TRUE(waitUntil([&] { return isOnTop(xcb_window_t(browser.winId())); }));
    EXPECT_TRUE(isActive(id()));
}

TEST_F(LinuxWindowRaiserTest, ADialogThatNobodyAskedForLeavesTheFocusAndTakesItWithItsWindow)
{
    QWidget browser;
    browser.setAttribute(Qt::WA_ShowWithoutActivating);
    browser.show();
    m_raiser.activate(*m_window.windowHandle(), {});
    ASSERT_TRUE(waitUntil([&] { return isActive(id()) && m_window.isActiveWindow(); }));
    QDialog dialog(&browser);
    dialog.setWindowModality(Qt::WindowModal);
    EXPECT_TRUE(openUnasked(dialog));
    // The window manager has settled once it has listed the next window, too.
    QWidget last;
    last.setAttribute(Qt::WA_ShowWithoutActivating);
    last.show();
    m_raiser.raiseWithoutFocus(*last.windowHandle());
    ASSERT_TRUE(waitUntil([&] { return isOnTop(xcb_window_t(last.winId())); }));
    EXPECT_TRUE(isActive(id()));
    EXPECT_TRUE(m_window.isActiveWindow());
    m_raiser.activate(*browser.windowHandle(), {});
    EXPECT_TRUE(waitUntil([&] { return dialog.isActiveWindow(); }));
}

TEST_F(LinuxWindowRaiserTest, TheStartThatAskedIsReportedAsAnswered)
{
    const XConnection watcher(qEnvironmentVariable("DISPLAY"));
    const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(watcher.handle(), watcher.root(), XCB_CW_EVENT_MASK, &mask);
    xcb_flush(watcher.handle());
    const xcb_atom_t begin = watcher.atom("_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t more = watcher.atom("_NET_STARTUP_INFO");
    m_raiser.activate(*m_window.windowHandle(), {"a \"quoted\" launcher/id_TIME77", {}});
    QByteArray text;
    ASSERT_TRUE(waitUntil([&] {
        while (xcb_generic_event_t *event = xcb_poll_for_event(watcher.handle())) {
            const auto *message = reinterpret_cast<const xcb_client_message_event_t *>(event);
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE &&
                (message->type == begin || message->type == more)) {
                text.append(reinterpret_cast<const char *>(message->data.data8), 20);
            }
            std::free(event);
        }
        return text.contains('\0');
    }));
    EXPECT_EQ(QByteArray(text.constData()), "remove: ID=\"a \\\"quoted\\\" launcher/id_TIME77\"");
}

} // namespace
} // namespace morvane
