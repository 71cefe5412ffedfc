#include "DesktopFixture.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using ProgramsTest = DesktopFixture;

TEST_F(ProgramsTest, AFormOfGtk3IsFilledInAndItsButtonPressedByNumber)
{
    TestProgram &yad = start(u"yad"_s, {u"--form"_s, u"--title=Address"_s, u"--field=First name"_s,
                                        u"--field=Town"_s, u"--button=Store it:0"_s});
    const QString text = captureWith({u"button 'Store it'"_s, u"text field"_s});
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

TEST_F(ProgramsTest, AFormOfGtk4IsFilledInItsButtonPressedByNumberAndItsDialogRead)
{
    start(u"gtk4-demo"_s, {u"--run=dialog"_s});
    // Names as this toolkit makes them: with the mark of the key, and twice.
    const QString name = u"button '_Interactive Dialog Interactive Dialog'"_s;
    const QString text = captureWith({u"Interactive Dialog  [click"_s, name, u"text field 'Entry 1'"_s});
    const QPoint element = placeOf(text, name).value_or(QPoint());
    const QPoint words = placeOfText(text, u"Interactive Dialog"_s).value_or(QPoint());
    EXPECT_LE((element - words).manhattanLength(), 4) << text.toStdString();
    const QString typed = run(m_tools.axType(numberOf(text, u"text field 'Entry 1'"_s), u"amber lantern"_s));
    EXPECT_TRUE(typed == u"Set the contents of text field 'Entry 1' to \"amber lantern\"."_s ||
                typed == u"Typed 13 characters."_s)
        << typed.toStdString();
    EXPECT_TRUE(run(m_tools.axClick(numberOf(text, name))).startsWith(u"Pressed "_s + name));
    captureWith({u"(frontmost window: \"Interactive Dialog\")"_s, u"text field 'Entry 1'"_s});
    captureWith(u"amber lantern"_s);
}

TEST_F(ProgramsTest, TextOfALightWindowIsReadOnADarkDesktopAndTheOtherWayRound)
{
    for (const auto &[ink, paper] : {std::pair{u"black"_s, u"#f4f4f0"_s}, {u"#d0d0d0"_s, u"#1c1c20"_s}}) {
        start(u"xterm"_s,
              {u"-geometry"_s, u"60x6+200+300"_s, u"-fa"_s, u"DejaVu Sans Mono"_s, u"-fs"_s, u"9"_s, u"-fg"_s,
               ink, u"-bg"_s, paper, u"-e"_s, u"sh"_s, u"-c"_s, u"echo ordinary small words; sleep 600"_s});
        captureWith(u"ordinary small words  [click"_s);
        m_programs.clear();
    }
}

TEST_F(ProgramsTest, AProgramThatHangsDoesNotHoldUpTheLook)
{
    TestProgram &yad = start(u"yad"_s, {u"--form"_s, u"--field=Name"_s, u"--button=Leave:0"_s});
    captureWith({u"Leave  [click"_s, u"button 'Leave'"_s});
    holdUp(yad);
    const QString text = capture();
    goOn(yad);
    EXPECT_TRUE(text.contains(u"Leave  [click"_s)) << text.toStdString();
    EXPECT_TRUE(text.contains(u"No clickable elements were exposed"_s)) << text.toStdString();
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

TEST_F(ProgramsTest, ALineIsSelectedByADragAndAWordByADoubleClick)
{
    start(u"featherpad"_s, {u"--standalone"_s});
    captureWith(u"Clickable elements"_s);
    run(m_tools.pasteText(u"alpha betabeta gamma"_s));
    const QPoint line = placeOfShown(u"betabeta"_s);
    const QPoint end = line + QPoint(250, 0);
    const QPoint start = line - QPoint(100, 0);
    EXPECT_EQ(
        run(m_tools.mouseDrag(end, start)),
        u"Dragged from (%1, %2) to (%3, %4)."_s.arg(end.x()).arg(end.y()).arg(start.x()).arg(start.y()));
    EXPECT_TRUE(copies(u"alpha betabeta gamma"_s)) << run(m_tools.clipboardRead()).toStdString();
    EXPECT_EQ(run(m_tools.mouseDoubleClick(line)),
              u"Double-clicked at (%1, %2)."_s.arg(line.x()).arg(line.y()));
    EXPECT_TRUE(copies(u"betabeta"_s)) << run(m_tools.clipboardRead()).toStdString();
}

TEST_F(ProgramsTest, TheWheelScrollsAListOfGtk4)
{
    start(u"gtk4-demo"_s, {});
    const QString first = u"Application Class"_s;
    run(m_tools.moveCursor(placeOfShown(first)));
    run(m_tools.mouseScroll(-20));
    EXPECT_TRUE(waitUntil([&] { return !placeOfText(capture(), first); }));
    run(m_tools.mouseScroll(20));
    placeOfShown(first);
}

TEST_F(ProgramsTest, TheWheelScrollsAndTheRightButtonOpensAMenu)
{
    start(u"featherpad"_s, {u"--standalone"_s});
    captureWith(u"Clickable elements"_s);
    QString text = u"Beginning\n"_s;
    for (int line = 0; line < 200; ++line)
        text += u"between\n"_s;
    run(m_tools.pasteText(text + u"Ending"_s));
    const QPoint last = placeOfShown(u"Ending"_s);
    // Among the recognised lines; the field's content is told as well, wherever it is scrolled to.
    const auto isShownWithout = [this](const QString &word, const QString &other) {
        const QString text = capture();
        return placeOfText(text, word) && !placeOfText(text, other);
    };
    run(m_tools.moveCursor(last));
    EXPECT_EQ(run(m_tools.mouseScroll(100)), u"Scrolled the mouse wheel up."_s);
    EXPECT_TRUE(waitUntil([&] { return isShownWithout(u"Beginning"_s, u"Ending"_s); }));
    EXPECT_EQ(run(m_tools.mouseScroll(-100)), u"Scrolled the mouse wheel down."_s);
    EXPECT_TRUE(waitUntil([&] { return isShownWithout(u"Ending"_s, u"Beginning"_s); }));
    run(m_tools.mouseRightClick(last));
    captureWith(u"Select All"_s);
    run(m_tools.pressKey(u"escape"_s));
}

TEST_F(ProgramsTest, AMenuOfQtIsOpenedByItsNumber)
{
    start(u"featherpad"_s, {u"--standalone"_s});
    const QString text = captureWith(u"menu item 'File'"_s);
    EXPECT_TRUE(
        run(m_tools.axClick(numberOf(text, u"menu item 'File'"_s))).startsWith(u"Pressed menu item"_s));
    captureWith(u"Save As"_s);
    run(m_tools.pressKey(u"escape"_s));
}

TEST_F(ProgramsTest, AFormOfGtk3AtTwiceTheSizeIsHitInTheMiddle)
{
    TestProgram &yad =
        start(u"yad"_s, {u"--form"_s, u"--field=Name"_s, u"--button=Leave:0"_s}, {{u"GDK_SCALE"_s, u"2"_s}});
    const QString text = captureWith({u"Leave  [click"_s, u"button 'Leave'"_s});
    const QPoint element = placeOf(text, u"button 'Leave'"_s).value_or(QPoint());
    const QPoint words = placeOfText(text, u"Leave"_s).value_or(QPoint());
    EXPECT_LE((element - words).manhattanLength(), 4) << text.toStdString();
    EXPECT_EQ(run(m_tools.clickAt(element)),
              u"Clicked at (%1, %2) on button 'Leave'."_s.arg(element.x()).arg(element.y()));
    EXPECT_EQ(yad.waitForExit(), 0);
}

TEST_F(ProgramsTest, AMenuOfQtAtTwiceTheSizeIsHitInTheMiddle)
{
    start(u"featherpad"_s, {u"--standalone"_s}, {{u"QT_SCALE_FACTOR"_s, u"2"_s}});
    const QString text = captureWith(u"menu item 'File'"_s);
    const QPoint element = placeOf(text, u"menu item 'File'"_s).value_or(QPoint());
    EXPECT_EQ(run(m_tools.clickAt(element)),
              u"Clicked at (%1, %2) on menu item 'File'."_s.arg(element.x()).arg(element.y()));
    captureWith(u"Save As"_s);
    run(m_tools.pressKey(u"escape"_s));
}

} // namespace
} // namespace morvane
