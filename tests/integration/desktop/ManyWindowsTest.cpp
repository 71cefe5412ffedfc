#include "DesktopFixture.h"

#include "async/OffMain.h"

#include <atomic>
#include <dlfcn.h>
#include <xcb/xcb.h>

using namespace Qt::StringLiterals;

namespace {

std::atomic<int> askedProperties = 0;

} // namespace

/// Counts what the server is asked of windows.
extern "C" xcb_get_property_cookie_t xcb_get_property(xcb_connection_t *connection, uint8_t isTaken,
                                                      xcb_window_t window, xcb_atom_t property,
                                                      xcb_atom_t type, uint32_t offset, uint32_t length)
{
    static const auto system =
        reinterpret_cast<decltype(&xcb_get_property)>(::dlsym(RTLD_NEXT, "xcb_get_property"));
    ++askedProperties;
    return system(connection, isTaken, window, property, type, offset, length);
}

namespace morvane {
namespace {

class ManyWindowsTest : public DesktopFixture {
protected:
    std::optional<ScreenElement> application(qint64 pid)
    {
        return runTask(m_scheduler, runOffMain([this, pid] {
                           return m_tree->application(pid, QDeadlineTimer(std::chrono::seconds(20)));
                       }));
    }

    const std::shared_ptr<AccessibilityTree> m_tree = desktop().elements;
};

TEST_F(ManyWindowsTest, TheWindowsOfTheScreenAreLookedAtOnceHoweverManyAProgramHas)
{
    constexpr int windows = 24;
    const TestProgram &program =
        startWindow(u"windows = [Gtk.Window(title=f'Window {n}') for n in range(%1)]\n"
                    "for other in windows:\n"
                    "    other.show_all()\n"
                    "widget = Gtk.Button(label='Save')"_s.arg(windows - 1));
    std::optional<ScreenElement> root;
    ASSERT_TRUE(waitUntil([&] { return (root = application(program.pid())).has_value(); }));
    ASSERT_TRUE(waitUntil([] { return LinuxApplications().windows({}).size() == windows; }));
    const int before = askedProperties;
    const auto found = m_tree->children({*root}, QDeadlineTimer(std::chrono::seconds(20)), {}).first();
    const int asked = askedProperties - before;
    EXPECT_EQ(found.size(), windows);
    EXPECT_GE(asked, windows);
    EXPECT_LT(asked, 12 * windows);
}

} // namespace
} // namespace morvane
