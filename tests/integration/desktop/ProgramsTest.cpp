#include "DesktopFixture.h"

#include <csignal>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using ProgramsTest = DesktopFixture;

TEST_F(ProgramsTest, AFormOfGtk3IsFilledInAndItsButtonPressedByNumber)
{
    TestProgram &yad = start(u"yad"_s, {u"--form"_s, u"--title=Address"_s, u"--field=First name"_s,
                                        u"--field=Town"_s, u"--button=Store it:0"_s});
    const QString text = captureWith(u"Store it"_s);
    EXPECT_TRUE(text.contains(u"(frontmost window: \"Address\")"_s)) << text.toStdString();
    const int button = numberOf(text, u"button 'Store it'"_s);
    // This program does not tell which label belongs to which field.
    const int name = numberOf(text, u"text field"_s);
    const int town = name + 1;
    ASSERT_GT(button, 0) << text.toStdString();
    ASSERT_GT(name, 0) << text.toStdString();
    EXPECT_EQ(run(m_tools.axType(name, u"Ada Ünsal"_s)),
              u"Set the contents of text field to \"Ada Ünsal\"."_s);
    EXPECT_TRUE(run(m_tools.axClick(town)).startsWith(u"AXPress was refused; Clicked at"_s));
    EXPECT_EQ(run(m_tools.typeText(u"Łódź 😀 123"_s)), u"Typed 10 characters."_s);
    EXPECT_TRUE(run(m_tools.axClick(button)).startsWith(u"Pressed button 'Store it' at"_s));
    ASSERT_EQ(yad.waitForExit(), 0);
    EXPECT_TRUE(yad.log().contains(u"Ada Ünsal|Łódź 😀 123|"_s)) << yad.log().toStdString();
}

TEST_F(ProgramsTest, AnElementOfAProgramThatHasEndedIsAnErrorAndNoClick)
{
    start(u"yad"_s, {u"--form"_s, u"--field=Name"_s, u"--button=Leave:0"_s});
    const QString text = captureWith(u"button 'Leave'"_s);
    m_programs.clear();
    const QString answer = run(m_tools.axClick(numberOf(text, u"button 'Leave'"_s)));
    EXPECT_TRUE(answer.startsWith(u"Error: element ["_s)) << answer.toStdString();
}

TEST_F(ProgramsTest, AProgramThatHangsDoesNotHoldUpTheLook)
{
    TestProgram &yad = start(u"yad"_s, {u"--form"_s, u"--field=Name"_s, u"--button=Leave:0"_s});
    captureWith(u"button 'Leave'"_s);
    ::kill(pid_t(yad.pid()), SIGSTOP);
    const QString text = capture();
    ::kill(pid_t(yad.pid()), SIGCONT);
    EXPECT_TRUE(text.contains(u"Leave  [click"_s)) << text.toStdString();
    EXPECT_TRUE(text.contains(u"No clickable elements were exposed"_s)) << text.toStdString();
}

TEST_F(ProgramsTest, AnEditorOfQtIsTypedIntoAndCopiedFrom)
{
    start(u"featherpad"_s, {u"--standalone"_s});
    captureWith(u"Clickable elements"_s);
    const QString written = u"Zoë said: \"naïve café\" – 100 % 漢字 😀\n\tand more {[(~^`)]}"_s;
    run(m_tools.typeText(written));
    run(m_tools.pressKey(u"command+a"_s));
    run(m_tools.pressKey(u"command+c"_s));
    EXPECT_TRUE(waitUntil([&] { return run(m_tools.clipboardRead()) == u"Clipboard content: "_s + written; }))
        << run(m_tools.clipboardRead()).toStdString();
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is FeatherPad."_s);
}

TEST_F(ProgramsTest, WhatIsPastedArrivesAndStaysOnTheClipboard)
{
    start(u"featherpad"_s, {u"--standalone"_s});
    captureWith(u"Clickable elements"_s);
    EXPECT_EQ(run(m_tools.pasteText(u"  pasted words \n"_s)),
              u"Pasted 12 characters into the focused app."_s);
    EXPECT_EQ(run(m_tools.clipboardRead()), u"Clipboard content: pasted words"_s);
    captureWith(u"pasted words"_s);
}

} // namespace
} // namespace morvane
