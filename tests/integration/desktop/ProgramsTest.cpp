#include "DesktopFixture.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

class ProgramsTest : public DesktopFixture {
protected:
    /// Checks that the first element of this summary is drawn around the place that was told: what changes
    /// when the pointer comes over it has its middle there.
    void expectDrawnAround(const QString &summary)
    {
        const QPoint told = placeOf(captureWith(summary), summary).value_or(QPoint());
        QRect changed;
        int patience = 0;
        // Again where a tool tip came first, and longer where the program was slow to draw.
        EXPECT_TRUE(waitUntil([&] {
            changed = changedAround(told, ++patience);
            const QPointF apart = QRectF(changed).center() - told;
            return changed.width() > 20 && std::abs(apart.x()) <= 2 && std::abs(apart.y()) <= 2;
        })) << summary.toStdString()
            << ' ' << changed.x() << ' ' << changed.y() << ' ' << changed.width() << ' ' << changed.height();
    }

private:
    static constexpr int reach = 60;

    /// What changes when the pointer comes to a place, from `reach` pixels left of it and above it.
    QRect changedAround(QPoint told, int patience)
    {
        const QRect around = QRect(told - QPoint(reach, reach), told + QPoint(reach, reach)) &
                             LinuxScreenCapture().displays({}).first();
        run(m_tools.moveCursor({1, 1}));
        const QImage before = stillPicture(around, patience);
        // A pointer that is only put there is not noticed by every toolkit.
        LinuxInputEvents().newSource({})->mouseMoved(told);
        const QImage after = stillPicture(around, patience);
        QRect changed;
        for (int y = 0; y < after.height(); ++y)
            for (int x = 0; x < after.width(); ++x)
                if (after.pixel(x, y) != before.pixel(x, y))
                    changed |= QRect(x, y, 1, 1);
        return changed.translated(around.topLeft());
    }

    /// The picture when it has stayed the same for `looks` further looks.
    static QImage stillPicture(const QRect &place, int looks)
    {
        LinuxScreenCapture screen;
        QImage last;
        int same = 0;
        EXPECT_TRUE(waitUntil([&] {
            const QImage now = screen.capture(place, {});
            same = std::exchange(last, now) == now ? same + 1 : 0;
            return same >= looks;
        }));
        return last;
    }
};

TEST_F(ProgramsTest, AnElementOfGtk3IsDrawnWithinTwoPixelsOfItsPlace)
{
    start(u"yad"_s, {u"--text=Ready"_s, u"--button=Leave:0"_s, u"--button=Stay:1"_s});
    expectDrawnAround(u"button 'Stay'"_s);
}

TEST_F(ProgramsTest, AnElementOfGtk4IsDrawnWithinTwoPixelsOfItsPlaceAlsoInAWindowThatDrawsItsOwnFrame)
{
    start(u"gtk4-demo"_s, {u"--run=dialog"_s});
    const QString name = u"button '_Interactive Dialog Interactive Dialog'"_s;
    expectDrawnAround(name);
    run(m_tools.axClick(numberOf(capture(), name)));
    captureWith(u"(frontmost window: \"Interactive Dialog\")"_s);
    expectDrawnAround(u"button '_Cancel Cancel'"_s);
}

TEST_F(ProgramsTest, AnElementOfQtIsDrawnWithinTwoPixelsOfItsPlaceAlsoAtTwiceTheSize)
{
    for (const QString &scale : {u"1"_s, u"2"_s}) {
        start(u"featherpad"_s, {u"--standalone"_s}, {{u"QT_SCALE_FACTOR"_s, scale}});
        expectDrawnAround(u"button 'Open'"_s);
        expectDrawnAround(u"button 'Side-Pane'"_s);
        m_programs.clear();
    }
}

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

TEST_F(ProgramsTest, AFieldOfGtk4TakesEveryCharacterAndControlKeys)
{
    start(u"gtk4-demo"_s, {u"--run=dialog"_s});
    clickOn(u"text field 'Entry 1'"_s);
    run(m_tools.typeText(u"Zoë 漢字 😀 ßx\b"_s));
    run(m_tools.pressKey(u"command+a"_s));
    EXPECT_TRUE(copies(u"Zoë 漢字 😀 ß"_s)) << run(m_tools.clipboardRead()).toStdString();
}

TEST_F(ProgramsTest, WhatIsInAFieldForAPasswordIsNotRead)
{
    startWindow(u"widget = Gtk.Entry(visibility=False, text='amber')"_s);
    const QString text = captureWith(u"text field"_s);
    EXPECT_TRUE(placeOf(text, u"text field"_s)) << text.toStdString();
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
    captureWith({u"Leave  [click"_s, u"button 'Leave'"_s});
    holdUp(yad);
    const QString text = capture();
    goOn(yad);
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
    EXPECT_TRUE(copies(written)) << run(m_tools.clipboardRead()).toStdString();
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

TEST_F(ProgramsTest, AProgramThatHangsIsNeitherPressedNorTypedInto)
{
    TestProgram &yad = start(u"yad"_s, {u"--form"_s, u"--field=Name"_s, u"--button=Leave:0"_s});
    const QString text = captureWith({u"button 'Leave'"_s, u"text field"_s});
    const int field = numberOf(text, u"text field"_s);
    holdUp(yad);
    const QString pressed = run(m_tools.axClick(numberOf(text, u"button 'Leave'"_s)));
    const QString written = run(m_tools.axType(field, u"words"_s));
    goOn(yad);
    EXPECT_TRUE(pressed.startsWith(u"Error: element ["_s)) << pressed.toStdString();
    EXPECT_TRUE(written.startsWith(u"Error: element ["_s)) << written.toStdString();
    EXPECT_FALSE(capture().contains(u"'words'"_s));
    EXPECT_TRUE(yad.isRunning());
}

TEST_F(ProgramsTest, ASliderThatIsDescribedByItsValueIsStillTheSameWhenItHasMoved)
{
    start(u"yad"_s, {u"--scale"_s, u"--value=10"_s, u"--button=Leave:0"_s});
    const int slider = numberOf(captureWith(u"slider"_s), u"slider"_s);
    for (const auto &value : {u"42"_s, u"50"_s})
        EXPECT_EQ(run(m_tools.axType(slider, value)),
                  u"Set the contents of slider '10' to \"%1\"."_s.arg(value));
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

TEST_F(ProgramsTest, ThreeWordsOfGtk4AreSelectedByADrag)
{
    start(u"gtk4-demo"_s, {u"--run=dialog"_s});
    const QPoint field = clickOn(u"text field 'Entry 1'"_s);
    run(m_tools.typeText(u"alpha betabeta gamma"_s));
    // From within its last word.
    run(m_tools.mouseDrag(field + QPoint(55, 0), field - QPoint(120, 0)));
    run(m_tools.pressKey(u"command+x"_s));
    EXPECT_TRUE(waitUntil([&] {
        return run(m_tools.clipboardRead()).startsWith(u"Clipboard content: alpha betabeta g"_s);
    })) << run(m_tools.clipboardRead()).toStdString();
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
