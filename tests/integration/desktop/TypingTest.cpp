#include "DesktopFixture.h"

#include "platform/linux/desktop/XDisplay.h"
#include "platform/linux/desktop/XKeyboard.h"
#include "platform/linux/desktop/XWindows.h"

#include <QFile>
#include <QProcess>
#include <algorithm>
#include <csignal>
#include <thread>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// A terminal whose program writes what it is given to a file.
class TypingTest : public DesktopFixture {
protected:
    TypingTest() { setLayout({u"us"_s}); }
    ~TypingTest() override { setLayout({u"us"_s}); }

    static void setLayout(const QStringList &layout)
    {
        EXPECT_EQ(QProcess::execute(u"setxkbmap"_s, layout), 0);
    }

    void openTerminal()
    {
        start(u"xterm"_s, {u"-u8"_s, u"-e"_s, u"sh"_s, u"-c"_s, u"cat > "_s + m_folder.filePath(u"typed"_s)});
        EXPECT_TRUE(waitUntil([&] { return QFile::exists(m_folder.filePath(u"typed"_s)); }));
    }

    QString typed() const
    {
        QFile file(m_folder.filePath(u"typed"_s));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll());
    }

    /// How many keys nothing is on.
    static qsizetype spareKeys() { return XKeyboard::read(*XDisplay::open())->spareKeys().size(); }
};

/// Waits beside the thread of the tests.
void waitInAnyThread(const std::function<bool()> &isSo)
{
    const QDeadlineTimer limit(std::chrono::seconds(20));
    while (!isSo() && !limit.hasExpired())
        std::this_thread::yield();
}

/// Leaves out all pauses, and has something happen in the third.
class ThirdPause final : public SequenceClock {
public:
    explicit ThirdPause(std::function<void()> happens) : m_happens(std::move(happens)) {}
    void sleep(std::chrono::milliseconds, const std::stop_token &) override
    {
        if (++m_sleeps == 3)
            m_happens();
    }
    QDeadlineTimer deadline(std::chrono::milliseconds limit) override { return QDeadlineTimer(limit); }

private:
    const std::function<void()> m_happens;
    int m_sleeps = 0;
};

TEST_F(TypingTest, EveryLayoutTypesTheSameTextAndIsGivenBack)
{
    openTerminal();
    const QString text =
        u"The quick brown Fox 0123456789 !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~ äÖßéñ Привет €漢😀"_s;
    QString expected;
    for (const QStringList &layout :
         {QStringList{u"us"_s}, {u"de"_s}, {u"fr"_s}, {u"ru"_s}, {u"us"_s, u"dvorak"_s}}) {
        setLayout(layout);
        const qsizetype spare = spareKeys();
        auto tools = std::make_unique<ScreenTools>(desktop());
        EXPECT_EQ(run(tools->typeText(text + u'\n')),
                  u"Typed %1 characters."_s.arg(text.toStdU32String().size() + 1));
        expected += text + u'\n';
        EXPECT_TRUE(waitUntil([&] { return typed() == expected; })) << layout.join(u' ').toStdString() << "\n"
                                                                    << typed().toStdString();
        tools.reset();
        EXPECT_TRUE(waitUntil([&] { return spareKeys() == spare; })) << layout.join(u' ').toStdString();
    }
}

TEST_F(TypingTest, KeysAreThoseOfTheUsersLayout)
{
    setLayout({u"us"_s, u"dvorak"_s});
    openTerminal();
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    for (const QString &key :
         {u"h"_s, u"i"_s, u"space"_s, u"7"_s, u"shift+a"_s, u"x"_s, u"backspace"_s, u"return"_s})
        EXPECT_EQ(run(m_tools.pressKey(key)), u"Pressed "_s + key + u'.');
    EXPECT_TRUE(waitUntil([&] { return typed() == "hi 7A\n"_L1; })) << typed().toStdString();
}

TEST_F(TypingTest, DigitsThatNeedShiftInTheLayoutAreStillDigits)
{
    setLayout({u"fr"_s});
    openTerminal();
    runTask(m_scheduler, m_tools.warmKeyboardLayout());
    for (const QString &key : {u"4"_s, u"a"_s, u"return"_s})
        run(m_tools.pressKey(key));
    EXPECT_TRUE(waitUntil([&] { return typed() == "4a\n"_L1; })) << typed().toStdString();
}

TEST_F(TypingTest, CommandIsTheControlKey)
{
    openTerminal();
    run(m_tools.typeText(u"last line\n"_s));
    run(m_tools.pressKey(u"command+d"_s));
    EXPECT_EQ(m_programs.back()->waitForExit(), 0);
    EXPECT_EQ(typed(), u"last line\n"_s);
}

TEST_F(TypingTest, AModifierWhoseKeyTurnsTheLayoutIsTheOneOnTheOtherSide)
{
    openTerminal();
    QString expected;
    for (const QString &key : {u"shift"_s, u"ctrl"_s, u"alt"_s}) {
        setLayout(
            {u"-layout"_s, u"us,ru"_s, u"-option"_s, QString(), u"-option"_s, u"grp:l%1_toggle"_s.arg(key)});
        run(m_tools.typeText(u"taken away"_s));
        run(m_tools.pressKey(u"command+u"_s));
        run(m_tools.typeText(u"Hello {World} "_s));
        run(m_tools.pressKey(u"option+a"_s));
        run(m_tools.pressKey(u"shift+b"_s));
        run(m_tools.pressKey(u"return"_s));
        expected += u"Hello {World} áB\n"_s;
        EXPECT_TRUE(waitUntil([&] { return typed() == expected; })) << typed().toStdString();
    }
    setLayout({u"-option"_s, QString()});
}

TEST_F(TypingTest, AKeyWhoseModifierTheKeyboardLacksIsNotPressedAlone)
{
    openTerminal();
    setLayout({u"-layout"_s, u"us,ru"_s, u"-option"_s, u"grp:lctrl_toggle,grp:rctrl_toggle"_s});
    run(m_tools.typeText(u"b"_s));
    run(m_tools.pressKey(u"command+u"_s));
    run(m_tools.typeText(u"c\n"_s));
    EXPECT_TRUE(waitUntil([&] { return typed() == u"bc\n"_s; })) << typed().toStdString();
    setLayout({u"-option"_s, QString()});
}

TEST_F(TypingTest, CapsLockThatIsOnBothShiftKeysTogetherChangesNothingOfATextAndIsOnAgainAfterwards)
{
    openTerminal();
    setLayout({u"-option"_s, u"caps:escape,shift:both_capslock"_s});
    const auto display = XDisplay::open();
    const auto pressBoth = [&] {
        const auto keyboard = XKeyboard::read(*display);
        for (const uint8_t type : {XCB_KEY_PRESS, XCB_KEY_RELEASE})
            for (const xkb_keysym_t symbol : {XKB_KEY_Shift_L, XKB_KEY_Shift_R})
                xcb_test_fake_input(display->connection(), type, keyboard->keyFor(symbol)->code,
                                    XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        display->synchronize();
    };
    const auto isLocked = [&] {
        const auto pointer = display->reply<xcb_query_pointer_reply_t>(
            xcb_query_pointer(display->connection(), display->root()));
        return (pointer->mask & XCB_MOD_MASK_LOCK) != 0;
    };
    pressBoth();
    ASSERT_TRUE(isLocked());
    run(m_tools.typeText(u"Hello WORLD\n"_s));
    EXPECT_TRUE(waitUntil([&] { return typed() == u"Hello WORLD\n"_s; })) << typed().toStdString();
    EXPECT_TRUE(isLocked());
    pressBoth();
    setLayout({u"-option"_s, QString()});
}

TEST_F(TypingTest, MoreCharactersThanThereAreSpareKeysAllArrive)
{
    openTerminal();
    QString text;
    for (char32_t character = 0x4e00; character < 0x4e00 + 150; ++character)
        text += QString::fromUcs4(&character, 1);
    run(m_tools.typeText(text + u'\n'));
    EXPECT_TRUE(waitUntil([&] { return typed() == text + u'\n'; })) << typed().toStdString();
}

TEST_F(TypingTest, FiveThousandCharactersArriveWithoutALossOrASwap)
{
    /// Leaves programs a fifth of the time that they have.
    class HastyClock final : public SequenceClock {
    public:
        void sleep(std::chrono::milliseconds duration, const std::stop_token &stop) override
        {
            m_clock.sleep(duration / 5, stop);
        }
        QDeadlineTimer deadline(std::chrono::milliseconds limit) override { return m_clock.deadline(limit); }

    private:
        RealSequenceClock m_clock;
    };
    openTerminal();
    const QString characters =
        u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 .,;:!?()äöüß€"_s;
    QString text;
    for (int at = 0; at < 5000; ++at)
        text += at % 100 == 99 ? QChar(u'\n') : characters.at(at * at % characters.size());
    ScreenTools tools(desktop(std::make_shared<HastyClock>()));
    EXPECT_EQ(run(tools.typeText(text)), u"Typed 5000 characters."_s);
    EXPECT_TRUE(waitUntil([&] { return typed() == text; })) << typed().toStdString();
}

TEST_F(TypingTest, ALayoutThatTheUserTurnsToInMidWordChangesNothingOfTheRest)
{
    const auto turnToTheOther = [] {
        const auto user = XDisplay::open();
        const auto turn = XKeyboard::read(*user)->keyFor(XKB_KEY_ISO_Next_Group);
        ASSERT_TRUE(turn);
        for (const uint8_t type : {XCB_KEY_PRESS, XCB_KEY_RELEASE})
            xcb_test_fake_input(user->connection(), type, turn->code, XCB_CURRENT_TIME, user->root(), 0, 0,
                                0);
        user->synchronize();
    };
    openTerminal();
    const QString beginning = u"Az\n"_s;
    const QString text = beginning + u"ertyß Qwerty,漢 Ж 12\n"_s;
    QString expected;
    for (const bool setsAnother : {true, false}) {
        setLayout({u"us,ru"_s, u"-option"_s, u"grp:menu_toggle"_s});
        const qsizetype spare = spareKeys();
        auto tools = std::make_unique<ScreenTools>(desktop(std::make_shared<ThirdPause>([&] {
            // What a program has not read yet, it reads as the new layout has it.
            waitInAnyThread([&] { return typed() == expected + beginning; });
            setsAnother ? setLayout({u"fr"_s}) : turnToTheOther();
        })));
        EXPECT_EQ(run(tools->typeText(text)), u"Typed %1 characters."_s.arg(text.size()));
        expected += text;
        EXPECT_TRUE(waitUntil([&] { return typed() == expected; })) << typed().toStdString();
        tools.reset();
        EXPECT_TRUE(waitUntil([&] { return spareKeys() == spare; }));
        if (!setsAnother)
            turnToTheOther();
    }
}

TEST_F(TypingTest, AModifierThatTheUserHoldsIsNotMixedIn)
{
    openTerminal();
    const auto user = XDisplay::open();
    const auto control = XKeyboard::read(*user)->keyFor(XKB_KEY_Control_L);
    ASSERT_TRUE(control);
    const auto hold = [&](uint8_t type) {
        xcb_test_fake_input(user->connection(), type, control->code, XCB_CURRENT_TIME, user->root(), 0, 0, 0);
        user->synchronize();
    };
    hold(XCB_KEY_PRESS);
    EXPECT_EQ(run(m_tools.typeText(u"held Down\n"_s)), u"Typed 10 characters."_s);
    EXPECT_TRUE(waitUntil([&] { return typed() == "held Down\n"_L1; })) << typed().toStdString();
    hold(XCB_KEY_RELEASE);
}

TEST_F(TypingTest, TheRestOfATextGoesToNoOtherWindowWhenTheOneItIsForCloses)
{
    openTerminal();
    const qint64 behind = m_programs.back()->pid();
    start(u"xterm"_s, {u"-e"_s, u"sh"_s, u"-c"_s, u"read line"_s});
    ScreenTools tools(desktop(std::make_shared<ThirdPause>(
        [behind] { waitInAnyThread([behind] { return hasTheKeyboard(behind); }); })));
    EXPECT_EQ(
        run(tools.typeText(u"ab\nfor nobody"_s)),
        u"Error: typing was stopped after 3 of 13 characters, because another window came to the front."_s);
    EXPECT_EQ(run(tools.typeText(u"end\n"_s)), u"Typed 4 characters."_s);
    EXPECT_TRUE(waitUntil([&] { return typed() == "end\n"_L1; })) << typed().toStdString();
}

TEST_F(TypingTest, TheRestOfATextGoesNowhereWhenTheWindowIsMinimized)
{
    const TestProgram &program =
        startWindow(u"widget = Gtk.Entry()\n"
                    "widget.connect('changed', lambda field: print(field.get_text(), flush=True))"_s,
                    u"window.iconify()"_s);
    const qint64 pid = program.pid();
    ScreenTools tools(desktop(std::make_shared<ThirdPause>([pid] {
        ::kill(pid_t(pid), SIGUSR1);
        waitInAnyThread([pid] {
            const auto display = XDisplay::open();
            const QList<XWindow> windows = stackedWindows(*display);
            return std::any_of(windows.begin(), windows.end(), [&](const XWindow &window) {
                return window.pid == pid && !window.isShown && !hasKeyboard(*display, window.window);
            });
        });
    })));
    const QString answer = run(tools.typeText(u"abc for nobody"_s));
    EXPECT_TRUE(answer.startsWith(u"Error: typing was stopped after 3 of 14 characters"_s))
        << answer.toStdString();
    EXPECT_TRUE(waitUntil([&] { return program.log().endsWith(u"abc\n"_s); })) << program.log().toStdString();
}

TEST_F(TypingTest, AStopInMidWordGivesBackKeysAndModifiers)
{
    startWindow(u"widget = Gtk.Entry()"_s);
    const qsizetype spare = spareKeys();
    auto stopped = std::make_unique<ScreenTools>(desktop());
    TaskHandle<ToolResult> handle = m_scheduler.spawn(stopped->typeText(u"ÄÖÜ"_s + QString(3000, u'A')));
    ASSERT_TRUE(waitUntil([&] { return spareKeys() < spare; }));
    handle.cancel();
    ASSERT_TRUE(waitUntil([&] { return handle.done(); }));
    EXPECT_EQ(handle.result().text, u"Error: stopped before it was done."_s);
    const auto display = XDisplay::open();
    const auto pointer = xReply(xcb_query_pointer_reply(
        display->connection(), xcb_query_pointer(display->connection(), display->root()), nullptr));
    EXPECT_EQ(pointer->mask, 0);
    stopped.reset();
    EXPECT_TRUE(waitUntil([&] { return spareKeys() == spare; }));
}

} // namespace
} // namespace morvane
