#include "DesktopFixture.h"

#include "platform/DisplaySilent.h"
#include "platform/linux/desktop/XKeyboard.h"

#include <QCursor>
#include <QFile>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <future>
#include <pthread.h>
#include <stop_token>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

/// What would wait for the display to the end takes longer.
constexpr std::chrono::milliseconds lessThanPatience = XDisplay::usualPatience * 3 / 4;

/// Has the display to itself, as a program has that hangs in the middle of something.
class Holder {
public:
    void hold()
    {
        xcb_grab_server(m_display->connection());
        m_display->synchronize();
    }
    void letGo()
    {
        xcb_ungrab_server(m_display->connection());
        m_display->synchronize();
    }

private:
    const std::unique_ptr<XDisplay> m_display = XDisplay::open();
};

/// Holds a thread up wherever it is, as a busy system may.
class ThreadHolder {
public:
    ThreadHolder()
    {
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_ends), 0);
        struct sigaction action{};
        action.sa_sigaction = [](int, siginfo_t *info, void *) {
            char byte = 0;
            const int end = info->si_value.sival_int;
            if (::write(end, &byte, 1) == 1)
                while (::read(end, &byte, 1) < 0)
                    ;
        };
        action.sa_flags = SA_SIGINFO;
        EXPECT_EQ(::sigaction(SIGUSR1, &action, &m_before), 0);
    }
    ~ThreadHolder()
    {
        ::sigaction(SIGUSR1, &m_before, nullptr);
        for (const int end : m_ends)
            ::close(end);
    }
    ThreadHolder(const ThreadHolder &) = delete;
    ThreadHolder &operator=(const ThreadHolder &) = delete;

    /// Returns once it is held up.
    void hold(std::thread &thread) const
    {
        char byte = 0;
        EXPECT_EQ(::pthread_sigqueue(thread.native_handle(), SIGUSR1, {.sival_int = m_ends[1]}), 0);
        EXPECT_EQ(::read(m_ends[0], &byte, 1), 1);
    }
    void letGo() const { EXPECT_EQ(::write(m_ends[0], "", 1), 1); }

private:
    int m_ends[2] = {-1, -1};
    struct sigaction m_before{};
};

class SilentDisplayTest : public DesktopFixture {
protected:
    static uint16_t stateNow()
    {
        const auto display = XDisplay::open();
        const auto pointer = display->reply<xcb_query_pointer_reply_t>(
            xcb_query_pointer(display->connection(), display->root()));
        return pointer->mask;
    }

    /// A connection that gives up soon, once the display has answered as soon.
    static std::unique_ptr<XDisplay> impatientDisplay()
    {
        std::unique_ptr<XDisplay> display;
        EXPECT_TRUE(waitUntil([&display] {
            try {
                display = XDisplay::open({}, 100ms);
            } catch (const DisplaySilent &) {
            }
            return display != nullptr;
        }));
        return display;
    }

    /// A source whose user stops what it does, as the display turns silent.
    std::unique_ptr<InputSource> newSource() { return m_input.newSource(m_stop.get_token()); }
    void holdAndStop()
    {
        m_holder.hold();
        m_stop.request_stop();
    }

    static qsizetype openDescriptors()
    {
        return QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size();
    }
    /// Whether the thread of this number waits for something to come from somewhere.
    static bool isInPoll(long thread)
    {
        QFile call(u"/proc/self/task/%1/syscall"_s.arg(thread));
        return call.open(QIODevice::ReadOnly) &&
               call.readAll().startsWith(QByteArray::number(SYS_poll) + ' ');
    }

    Holder m_holder;
    LinuxInputEvents m_input;
    std::stop_source m_stop;
};

TEST_F(SilentDisplayTest, AQuestionEndsAndNoneIsAskedAfterIt)
{
    const auto display = impatientDisplay();
    m_holder.hold();
    EXPECT_THROW(XDisplay::open({}, 100ms), DisplaySilent);
    EXPECT_THROW(display->synchronize(), DisplaySilent);
    EXPECT_THROW(display->monitors(), DisplaySilent);
    m_holder.letGo();
    EXPECT_THROW(display->synchronize(), DisplaySilent) << "it may have missed something";
    EXPECT_TRUE(XDisplay::open());
}

TEST_F(SilentDisplayTest, AConnectionThatComesTooLateIsClosed)
{
    const qsizetype before = openDescriptors();
    m_holder.hold();
    for (int attempt = 0; attempt < 4; ++attempt)
        EXPECT_THROW(XDisplay::open({}, 10ms), DisplaySilent);
    EXPECT_TRUE(waitUntil([&] { return openDescriptors() > before; })) << "they are on their way";
    m_holder.letGo();
    EXPECT_TRUE(waitUntil([&] { return openDescriptors() <= before; }));
}

TEST_F(SilentDisplayTest, AStopEndsAQuestionThatHasBeenAsked)
{
    const auto display = XDisplay::open(m_stop.get_token(), std::chrono::hours(1));
    m_holder.hold();
    auto asked = std::async(std::launch::async, [&] { EXPECT_THROW(display->synchronize(), DisplaySilent); });
    const auto hasEnded = [&] { return asked.wait_for(0s) == std::future_status::ready; };
    EXPECT_FALSE(hasEnded());
    m_stop.request_stop();
    EXPECT_TRUE(waitUntil(hasEnded));
    m_holder.letGo();
}

TEST_F(SilentDisplayTest, AnAnswerThatIsThereCountsHoweverLateItIsLookedAt)
{
    constexpr auto patience = 3s;
    const auto display = XDisplay::open({}, patience);
    m_holder.hold();
    std::atomic<long> number = 0;
    std::thread asking([&] {
        number = ::syscall(SYS_gettid);
        EXPECT_NO_THROW(display->synchronize());
    });
    EXPECT_TRUE(waitUntil([&] { return isInPoll(number); }));
    const ThreadHolder holder;
    holder.hold(asking);
    m_holder.letGo();
    EXPECT_TRUE(waitUntil([&] {
        int there = 0;
        return ::ioctl(xcb_get_file_descriptor(display->connection()), FIONREAD, &there) == 0 && there > 0;
    }));
    const QDeadlineTimer over(patience);
    EXPECT_TRUE(waitUntil([&] { return over.hasExpired(); }));
    holder.letGo();
    asking.join();
}

TEST_F(SilentDisplayTest, TheKeyboardIsNotReadWithoutEnd)
{
    const auto display = impatientDisplay();
    m_holder.hold();
    EXPECT_THROW(XKeyboard::read(*display), DisplaySilent);
    m_holder.letGo();
    EXPECT_TRUE(XKeyboard::read(*XDisplay::open()));
}

TEST_F(SilentDisplayTest, AStopEndsWhateverWaitsForIt)
{
    std::vector<Task<ToolResult>> tools;
    tools.push_back(m_tools.captureScreen());
    tools.push_back(m_tools.clickAt({2, 2}));
    tools.push_back(m_tools.typeText(u"a"_s));
    tools.push_back(m_tools.mouseDrag({2, 2}, {3, 3}));
    tools.push_back(m_tools.mouseScroll(3));
    tools.push_back(m_tools.clipboardRead());
    tools.push_back(m_tools.frontmostApp());
    tools.push_back(m_tools.activateApp(u"Editor"_s));
    // Nothing is left that the thread of the windows would ask the display for.
    QCursor::pos();
    settle();
    m_holder.hold();
    std::vector<TaskHandle<ToolResult>> waiting;
    for (Task<ToolResult> &tool : tools)
        waiting.push_back(m_scheduler.spawn(std::move(tool)));
    settle();
    EXPECT_TRUE(displayIsSilent());
    for (TaskHandle<ToolResult> &one : waiting) {
        EXPECT_FALSE(one.done());
        one.cancel();
    }
    for (TaskHandle<ToolResult> &one : waiting) {
        EXPECT_TRUE(waitUntil([&] { return one.done(); }, lessThanPatience));
        EXPECT_EQ(one.result().text, u"Error: stopped before it was done."_s);
    }
    m_holder.letGo();
    EXPECT_EQ(run(m_tools.moveCursor({2, 2})), u"Moved the cursor to (2, 2)."_s);
}

TEST_F(SilentDisplayTest, AStopEndsEachLookAtIt)
{
    const TestProgram &program = startWindow(u"widget = Gtk.Entry()"_s);
    captureWith(u"text field"_s);
    LinuxAccessibilityTree tree{QString()};
    LinuxApplications applications;
    LinuxScreenCapture screen;
    const auto soon = [] { return QDeadlineTimer(1s); };
    const auto [root, window] =
        std::async(std::launch::async, [&] {
            const auto found = tree.application(program.pid(), soon());
            return std::pair(*found, tree.children({*found}, soon(), {}).first().first());
        }).get();
    holdAndStop();
    const std::stop_token stop = m_stop.get_token();
    const std::function<void()> looks[] = {
        [&] { screen.displays(stop); },
        [&] { screen.pointer(stop); },
        [&] { screen.capture({0, 0, 9, 9}, stop); },
        [&] { applications.focusedWindow(program.pid(), stop); },
        [&] { applications.windows(stop); },
        [&] { tree.children({root}, soon(), stop); },
        [&] { tree.elementAt({2, 2}, stop); },
        [&] { tree.current(window, stop); },
        [&] { tree.isCovered(window, stop); },
        [&] { tree.press(window, stop); },
        [&] { tree.setValue(window, u"a"_s, stop); },
    };
    std::vector<std::future<void>> looking;
    for (const auto &look : looks)
        looking.push_back(std::async(std::launch::async, [&look] { EXPECT_THROW(look(), DisplaySilent); }));
    const auto hasEnded = [](const auto &one) { return one.wait_for(0s) == std::future_status::ready; };
    waitUntil([&] { return std::all_of(looking.begin(), looking.end(), hasEnded); }, lessThanPatience);
    for (std::size_t at = 0; at < looking.size(); ++at)
        EXPECT_TRUE(hasEnded(looking[at])) << at;
    m_holder.letGo();
}

TEST_F(SilentDisplayTest, AButtonIsUpOnceItAnswersAfterAStopInMidDrag)
{
    auto source = newSource();
    source->buttonDown(MouseButton::left, {2, 2});
    holdAndStop();
    source->dragged({200, 200});
    source.reset();
    m_holder.letGo();
    EXPECT_TRUE(waitUntil([] { return stateNow() == 0; }));
}

TEST_F(SilentDisplayTest, KeysAreUpAndGivenBackOnceItAnswersAfterAStopInMidWord)
{
    startWindow(u"widget = Gtk.Entry()"_s);
    const qsizetype spare = XKeyboard::read(*XDisplay::open())->spareKeys().size();
    auto source = newSource();
    source->prepareText(u"ÄA漢"_s);
    EXPECT_TRUE(source->characterDown(U'Ä'));
    source->characterUp(U'Ä');
    EXPECT_TRUE(source->characterDown(U'A'));
    holdAndStop();
    EXPECT_THROW(source->characterDown(U'漢'), DisplaySilent);
    source.reset();
    m_holder.letGo();
    EXPECT_TRUE(waitUntil([] { return stateNow() == 0; }));
    run(m_tools.typeText(u"a"_s));
    EXPECT_TRUE(waitUntil([&] { return XKeyboard::read(*XDisplay::open())->spareKeys().size() == spare; }));
}

TEST_F(SilentDisplayTest, CapsLockIsBackOnceItAnswersAfterAStopInMidWord)
{
    startWindow(u"widget = Gtk.Entry()"_s);
    const qsizetype spare = XKeyboard::read(*XDisplay::open())->spareKeys().size();
    const auto pressCapsLock = [user = XDisplay::open()] {
        const uint8_t key = XKeyboard::read(*user)->keyFor(XKB_KEY_Caps_Lock).value_or(XKey()).code;
        for (const uint8_t type : {XCB_KEY_PRESS, XCB_KEY_RELEASE})
            xcb_test_fake_input(user->connection(), type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        user->synchronize();
    };
    pressCapsLock();
    auto source = newSource();
    source->prepareText(u"漢b"_s);
    EXPECT_TRUE(source->characterDown(U'漢'));
    source->characterUp(U'漢');
    EXPECT_EQ(stateNow(), 0);
    holdAndStop();
    source.reset();
    m_holder.letGo();
    EXPECT_TRUE(waitUntil([] { return stateNow() == XCB_MOD_MASK_LOCK; }));
    pressCapsLock();
    run(m_tools.typeText(u"a"_s));
    EXPECT_TRUE(waitUntil([&] { return XKeyboard::read(*XDisplay::open())->spareKeys().size() == spare; }));
}

TEST_F(SilentDisplayTest, AProgramOfGtk4ThatIsHeldUpReadsWhatWasTyped)
{
    TestProgram &program = start(u"gtk4-demo"_s, {u"--run=dialog"_s});
    clickOn(u"text field 'Entry 1'"_s);
    holdUp(program);
    for (const QString &part : {u"漢字 ß "_s, u"Ж ł"_s})
        EXPECT_EQ(run(m_tools.typeText(part)), u"Typed %1 characters."_s.arg(part.size()));
    goOn(program);
    run(m_tools.pressKey(u"command+a"_s));
    EXPECT_TRUE(copies(u"漢字 ß Ж ł"_s)) << run(m_tools.clipboardRead()).toStdString();
}

} // namespace
} // namespace morvane
