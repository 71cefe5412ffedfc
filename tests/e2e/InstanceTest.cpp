#include "MorvaneTest.h"

#include "support/WaitUntil.h"
#include "ui/theme/AppMark.h"

#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <csignal>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class InstanceTest : public MorvaneTest {};

TEST_F(InstanceTest, TheWindowHasTheProgramsNameAndItsIcon)
{
    MorvaneSession &morvane = start({});
    const xcb_window_t window = morvane.screen().activeWindow();
    EXPECT_EQ(morvane.screen().bytes(window, "_NET_WM_NAME"), "Morvane");
    const QList<uint32_t> icon = morvane.screen().property(window, "_NET_WM_ICON");
    ASSERT_GT(icon.size(), 2);
    const QSize size(int(icon.at(0)), int(icon.at(1)));
    ASSERT_GE(icon.size(), 2 + qsizetype(size.width()) * size.height());
    const QImage shown(reinterpret_cast<const uchar *>(icon.constData() + 2), size.width(), size.height(),
                       QImage::Format_ARGB32);
    EXPECT_EQ(shown, appIcon().pixmap(size).toImage().convertToFormat(QImage::Format_ARGB32));
}

TEST_F(InstanceTest, ASecondStartRaisesTheFirstWindowAndEnds)
{
    MorvaneSession &morvane = start({});
    const xcb_window_t window = morvane.screen().activeWindow();
    // Something else takes the focus, as another program's window would.
    const xcb_window_t other = morvane.screen().openWindow();
    ASSERT_TRUE(waitUntil([&] { return morvane.screen().activeWindow() == other; }));
    const auto second = morvane.startAgain();
    EXPECT_EQ(second->waitForExit(), 0);
    EXPECT_TRUE(waitUntil([&] { return morvane.screen().activeWindow() == window; }));
    EXPECT_TRUE(morvane.program().process().isRunning());
    EXPECT_TRUE(waitUntil([&] {
        const auto order = morvane.screen().property(morvane.screen().root(), "_NET_CLIENT_LIST_STACKING");
        return !order.isEmpty() && order.last() == window;
    }));
}

TEST_F(InstanceTest, AStartAfterACrashOpensAWindow)
{
    MorvaneSession &morvane = start({});
    morvane.program().process().kill();
    morvane.start();
    EXPECT_TRUE(morvane.program().shows(u"Message Morvane"_s));
}

TEST_F(InstanceTest, TheProgramEndsOrderlyWhenTheSessionEnds)
{
    MorvaneSession &morvane = start({});
    ::kill(pid_t(morvane.program().process().pid()), SIGTERM);
    EXPECT_EQ(morvane.program().process().waitForExit(), 0);
}

} // namespace
} // namespace morvane
