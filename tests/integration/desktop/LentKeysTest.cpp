#include "platform/linux/desktop/XLentKeys.h"

#include "DesktopFixture.h"

#include "platform/linux/desktop/XInputSource.h"

#include <QFile>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Waits ten times as long as is asked for between two tries of a character, and tells of each.
class PatientClock final : public SequenceClock {
public:
    void sleep(std::chrono::milliseconds duration, const std::stop_token &stop) override
    {
        const bool isBetweenTries = duration == std::chrono::milliseconds(20);
        if (isBetweenTries && onTry)
            onTry();
        m_clock.sleep(isBetweenTries ? duration * 10 : duration, stop);
    }
    QDeadlineTimer deadline(std::chrono::milliseconds limit) override { return m_clock.deadline(limit); }

    std::function<void()> onTry;

private:
    RealSequenceClock m_clock;
};

/// Characters that the layout lacks, typed into programs that come to read them late.
class LentKeysTest : public DesktopFixture {
protected:
    LentKeysTest() : DesktopFixture(desktopWithoutText()) {}

    static qsizetype spareKeys() { return XKeyboard::read(*XDisplay::open())->spareKeys().size(); }

    /// A program that says what is in its field, and answers the ping of window managers.
    TestProgram &startField()
    {
        return startWindow(u"widget = Gtk.Entry()\n"
                           "widget.connect('changed', lambda field: print(field.get_text(), flush=True))"_s);
    }

    /// One that does not.
    TestProgram &startTerminal()
    {
        TestProgram &program = start(
            u"xterm"_s, {u"-u8"_s, u"-e"_s, u"sh"_s, u"-c"_s, u"cat > "_s + m_folder.filePath(u"typed"_s)});
        EXPECT_TRUE(waitUntil([&] { return QFile::exists(m_folder.filePath(u"typed"_s)); }));
        return program;
    }

    QString typedIntoTerminal() const
    {
        QFile file(m_folder.filePath(u"typed"_s));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return QString::fromUtf8(file.readAll());
    }

    static QString typedInto(const TestProgram &field)
    {
        return field.log().split(u'\n', Qt::SkipEmptyParts).value(field.log().count(u'\n') - 1);
    }

    void typeWhileHeldUp(TestProgram &program, const QStringList &texts)
    {
        holdUp(program);
        for (const QString &text : texts)
            EXPECT_EQ(run(m_tools.typeText(text)), u"Typed %1 characters."_s.arg(text.size()));
        goOn(program);
    }

    static QString chineseText(int size)
    {
        QString text;
        for (char16_t character = 0x4e00; character < 0x4e00 + size; ++character)
            text += QChar(character);
        return text;
    }

    /// With a text of every sequence they are tried again.
    bool areGivenBack(qsizetype before)
    {
        return waitUntil([&] {
            run(m_tools.typeText(u"ß"_s));
            return spareKeys() == before;
        });
    }

    const std::shared_ptr<PatientClock> m_tries = std::make_shared<PatientClock>();
    ScreenTools m_patient{desktop(m_tries)};
};

TEST_F(LentKeysTest, ATerminalThatIsHeldUpReadsWhatWasTyped)
{
    TestProgram &program = startTerminal();
    typeWhileHeldUp(program, {u"漢字 ß\n"_s, u"Ж ł\n"_s});
    EXPECT_TRUE(waitUntil([&] { return typedIntoTerminal() == u"漢字 ß\nЖ ł\n"_s; }))
        << typedIntoTerminal().toStdString();
}

TEST_F(LentKeysTest, AProgramOfGtk3ThatIsHeldUpReadsWhatWasTyped)
{
    TestProgram &program = startField();
    typeWhileHeldUp(program, {u"漢字 ß "_s, u"Ж ł"_s});
    EXPECT_TRUE(waitUntil([&] { return typedInto(program) == u"漢字 ß Ж ł"_s; }))
        << program.log().toStdString();
}

TEST_F(LentKeysTest, AProgramOfQtThatIsHeldUpReadsWhatWasTyped)
{
    TestProgram &program = start(u"featherpad"_s, {u"--standalone"_s});
    captureWith(u"Clickable elements"_s);
    typeWhileHeldUp(program, {u"漢字 ß "_s, u"Ж ł"_s});
    run(m_tools.pressKey(u"command+a"_s));
    EXPECT_TRUE(copies(u"漢字 ß Ж ł"_s)) << run(m_tools.clipboardRead()).toStdString();
}

TEST_F(LentKeysTest, ATextWithMoreCharactersThanThereAreKeysWaitsUntilTheProgramReads)
{
    TestProgram &program = startField();
    const QString text = chineseText(60);
    ASSERT_GT(text.size(), spareKeys());
    holdUp(program);
    m_tries->onTry = [&program] { goOn(program); };
    EXPECT_EQ(run(m_patient.typeText(text)), u"Typed 60 characters."_s);
    EXPECT_TRUE(waitUntil([&] { return typedInto(program) == text; })) << typedInto(program).toStdString();
}

TEST_F(LentKeysTest, AllProgramsAreToldOfOneChangeForAsManyCharactersAsThereAreKeys)
{
    const TestProgram &program = startField();
    const qsizetype spare = spareKeys();
    const QString text = chineseText(int(2 * spare + 1));
    auto tools = std::make_unique<ScreenTools>(desktop());
    // The server itself tells of the first key of another keyboard.
    run(tools->typeText(u"a"_s));
    const auto listener = XDisplay::open();
    EXPECT_EQ(run(tools->typeText(text)), u"Typed %1 characters."_s.arg(text.size()));
    EXPECT_TRUE(waitUntil([&] { return typedInto(program) == u'a' + text; }))
        << typedInto(program).toStdString();
    tools.reset();
    EXPECT_TRUE(waitUntil([&] { return spareKeys() == spare; }));
    listener->synchronize();
    qsizetype changes = 0;
    while (const auto event = xReply(xcb_poll_for_event(listener->connection())))
        changes += (event->response_type & 0x7f) == XCB_MAPPING_NOTIFY ? 1 : 0;
    EXPECT_EQ(changes, (text.size() + spare - 1) / spare + 1);
}

TEST_F(LentKeysTest, EachKeyboardKeepsTheLayoutThatTheUserHasGivenIt)
{
    const QList<int> keyboards{3, 5, 7}; // The X server of the tests has these.
    const auto layouts = [&] {
        QStringList layouts;
        for (const int keyboard : keyboards) {
            QProcess teller;
            teller.start(u"xkbcomp"_s,
                         {u"-i"_s, QString::number(keyboard), qEnvironmentVariable("DISPLAY"), u"-"_s});
            EXPECT_TRUE(teller.waitForFinished());
            layouts.append(QString::fromUtf8(teller.readAllStandardOutput()));
        }
        return layouts;
    };
    startField();
    const auto setLayout = [](const QStringList &layout) {
        EXPECT_EQ(QProcess::execute(u"setxkbmap"_s, layout), 0);
    };
    setLayout({u"us"_s});
    setLayout({u"-device"_s, u"7"_s, u"de"_s});
    const qsizetype spare = spareKeys();
    auto tools = std::make_unique<ScreenTools>(desktop());
    run(tools->typeText(u"a"_s));
    const QStringList before = layouts();
    EXPECT_TRUE(before.at(2).contains(u"udiaeresis"_s) && !before.at(1).contains(u"udiaeresis"_s));
    EXPECT_EQ(run(tools->typeText(u"漢字ß"_s)), u"Typed 3 characters."_s);
    tools.reset();
    EXPECT_TRUE(waitUntil([&] { return spareKeys() == spare && layouts() == before; }));
    setLayout({u"us"_s});
}

TEST_F(LentKeysTest, AStopEndsThatWaitAtOnceAndLosesNothingOfWhatWasTyped)
{
    TestProgram &program = startField();
    const qsizetype spare = spareKeys();
    const QString text = chineseText(60);
    holdUp(program);
    std::atomic<bool> waits = false;
    m_tries->onTry = [&waits] { waits = true; };
    TaskHandle<ToolResult> typing = m_scheduler.spawn(m_patient.typeText(text));
    EXPECT_TRUE(waitUntil([&] { return waits.load(); }));
    typing.cancel();
    EXPECT_TRUE(waitUntil([&] { return typing.done(); }));
    EXPECT_EQ(typing.result().text, u"Error: stopped before it was done."_s);
    goOn(program);
    EXPECT_TRUE(waitUntil([&] { return typedInto(program) == text.first(spare); }))
        << typedInto(program).toStdString();
}

TEST_F(LentKeysTest, KeysAreGivenBackOnceTheProgramHasReadThem)
{
    const qsizetype spare = spareKeys();
    TestProgram &program = startField();
    holdUp(program);
    run(m_tools.typeText(u"漢"_s));
    EXPECT_EQ(spareKeys(), spare - 1);
    run(m_tools.typeText(u"漢ß"_s));
    EXPECT_EQ(spareKeys(), spare - 2) << "what is on a key serves again";
    goOn(program);
    EXPECT_TRUE(areGivenBack(spare));
}

TEST_F(LentKeysTest, AProgramThatDoesNotTellKeepsThemUntilItOrMorvaneEnds)
{
    const qsizetype spare = spareKeys();
    TestProgram &terminal = startTerminal();
    auto tools = std::make_unique<ScreenTools>(desktop());
    run(tools->typeText(u"漢"_s));
    EXPECT_EQ(spareKeys(), spare - 1);
    tools.reset();
    EXPECT_TRUE(waitUntil([&] { return spareKeys() == spare; }));
    run(m_tools.typeText(u"漢"_s));
    EXPECT_EQ(spareKeys(), spare - 1);
    terminal.end();
    startField();
    EXPECT_TRUE(areGivenBack(spare));
}

TEST_F(LentKeysTest, WhatACrashHasLeftIsGivenBackBeforeTheKeyboardIsUsedAgain)
{
    const qsizetype spare = spareKeys();
    startTerminal();
    const auto crash = [] {
        XInputSource source(XDisplay::open());
        source.prepareText(u"漢字"_s);
        EXPECT_TRUE(source.characterDown(U'漢'));
        source.characterUp(U'漢');
    };
    crash();
    EXPECT_EQ(spareKeys(), spare - 2);
    LinuxInputEvents next;
    next.layoutCharacters();
    EXPECT_EQ(spareKeys(), spare);
    // What the user has put on one of the keys since stays there.
    crash();
    const auto user = XDisplay::open();
    const uint8_t key = XKeyboard::read(*user)->keyFor(symbolOf(U'字').value()).value_or(XKey()).code;
    const auto put = [&](xcb_keysym_t symbol) {
        xcb_change_keyboard_mapping(user->connection(), 1, key, 1, &symbol);
        user->synchronize();
    };
    put('x');
    LinuxInputEvents another;
    another.newSource({});
    EXPECT_EQ(XKeyboard::read(*user)->symbol(key), xkb_keysym_t('x'));
    put(XCB_NO_SYMBOL);
    EXPECT_EQ(spareKeys(), spare);
}

TEST_F(LentKeysTest, AWindowThatHasTheNumberOfOneThatHasGoneIsNotAsked)
{
    const qsizetype spare = spareKeys();
    const auto display = XDisplay::open();
    XLentKeys(*display).lend({XKeyboard::read(*display)->spareKeys().first()}, {symbolOf(U'漢').value()});
    EXPECT_EQ(spareKeys(), spare - 1);
    const xcb_window_t another = display->root();
    xcb_change_property(display->connection(), XCB_PROP_MODE_REPLACE, display->root(),
                        display->atom("_MORVANE_LENT_KEYS_READERS"), XCB_ATOM_WINDOW, 32, 1, &another);
    XLentKeys(*display).giveBackOnceRead(std::chrono::milliseconds(0));
    EXPECT_EQ(spareKeys(), spare);
}

} // namespace
} // namespace morvane
