#include "DesktopFixture.h"

#include "support/XConnection.h"
#include "tools/screen/ElementWalk.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Programs of others, by what they tell of their elements alone.
class ElementsTest : public DesktopFixture {
protected:
    ElementsTest() : DesktopFixture(desktopWithoutText()) {}

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

TEST_F(ElementsTest, AnElementOfGtk3IsDrawnWithinTwoPixelsOfItsPlace)
{
    start(u"yad"_s, {u"--text=Ready"_s, u"--button=Leave:0"_s, u"--button=Stay:1"_s});
    expectDrawnAround(u"button 'Stay'"_s);
}

TEST_F(ElementsTest, AnElementOfGtk4IsDrawnWithinTwoPixelsOfItsPlaceAlsoInAWindowThatDrawsItsOwnFrame)
{
    start(u"gtk4-demo"_s, {u"--run=dialog"_s});
    const QString name = u"button '_Interactive Dialog Interactive Dialog'"_s;
    expectDrawnAround(name);
    run(m_tools.axClick(numberOf(capture(), name)));
    captureWith(u"(frontmost window: \"Interactive Dialog\")"_s);
    expectDrawnAround(u"button '_Cancel Cancel'"_s);
}

TEST_F(ElementsTest, TheElementsOfAWindowOfGtk4ThatMayBeAnyHaveNoPlace)
{
    const TestProgram &program = start(u"gtk4-demo"_s, {u"--run=dialog"_s});
    captureWith(u"text field 'Entry 1'"_s);
    const XConnection server(qEnvironmentVariable("DISPLAY"));
    const xcb_window_t window = server.activeWindow();
    start(u"xterm"_s, {});
    const auto placed = [&program] {
        LinuxAccessibilityTree tree{{}};
        const QDeadlineTimer deadline(std::chrono::seconds(20));
        const auto root = tree.application(program.pid(), deadline);
        return root ? ElementWalk(tree, deadline, {}).find(*root).size() : -1;
    };
    EXPECT_TRUE(waitUntil([&] { return placed() > 0; })) << "behind another it is known by its title";
    const QByteArray title = "Not what the program tells";
    xcb_change_property(server.handle(), XCB_PROP_MODE_REPLACE, window, server.atom("_NET_WM_NAME"),
                        server.atom("UTF8_STRING"), 8, uint32_t(title.size()), title.constData());
    xcb_flush(server.handle());
    EXPECT_TRUE(waitUntil([&] { return placed() == 0; })) << placed();
}

TEST_F(ElementsTest, AnElementOfQtIsDrawnWithinTwoPixelsOfItsPlaceAlsoAtTwiceTheSize)
{
    for (const QString &scale : {u"1"_s, u"2"_s}) {
        start(u"featherpad"_s, {u"--standalone"_s}, {{u"QT_SCALE_FACTOR"_s, scale}});
        expectDrawnAround(u"button 'Open'"_s);
        expectDrawnAround(u"button 'Side-Pane'"_s);
        m_programs.clear();
    }
}

TEST_F(ElementsTest, AFieldOfGtk4TakesEveryCharacterAndControlKeys)
{
    start(u"gtk4-demo"_s, {u"--run=dialog"_s});
    clickOn(u"text field 'Entry 1'"_s);
    run(m_tools.typeText(u"Zoë 漢字 😀 ßx\b"_s));
    run(m_tools.pressKey(u"command+a"_s));
    EXPECT_TRUE(copies(u"Zoë 漢字 😀 ß"_s)) << run(m_tools.clipboardRead()).toStdString();
}

TEST_F(ElementsTest, WhatIsInAFieldForAPasswordIsNotRead)
{
    startWindow(u"widget = Gtk.Entry(visibility=False, text='amber')"_s);
    const QString text = captureWith(u"text field"_s);
    EXPECT_TRUE(placeOf(text, u"text field"_s)) << text.toStdString();
}

TEST_F(ElementsTest, AnElementOfAProgramThatHasEndedIsAnErrorAndNoClick)
{
    start(u"yad"_s, {u"--form"_s, u"--field=Name"_s, u"--button=Leave:0"_s});
    const QString text = captureWith(u"button 'Leave'"_s);
    m_programs.clear();
    const QString answer = run(m_tools.axClick(numberOf(text, u"button 'Leave'"_s)));
    EXPECT_TRUE(answer.startsWith(u"Error: element ["_s)) << answer.toStdString();
}

TEST_F(ElementsTest, AnEditorOfQtIsTypedIntoAndCopiedFrom)
{
    start(u"featherpad"_s, {u"--standalone"_s});
    captureWith(u"Clickable elements"_s);
    const QString written = u"Zoë said: \"naïve café\" – 100 % 漢字 😀\n\tand more {[(~^`)]}"_s;
    run(m_tools.typeText(written));
    run(m_tools.pressKey(u"command+a"_s));
    EXPECT_TRUE(copies(written)) << run(m_tools.clipboardRead()).toStdString();
    EXPECT_EQ(run(m_tools.frontmostApp()), u"The frontmost application is FeatherPad."_s);
}

TEST_F(ElementsTest, AProgramThatHangsIsNeitherPressedNorTypedInto)
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

TEST_F(ElementsTest, ASliderThatIsDescribedByItsValueIsStillTheSameWhenItHasMoved)
{
    start(u"yad"_s, {u"--scale"_s, u"--value=10"_s, u"--button=Leave:0"_s});
    const int slider = numberOf(captureWith(u"slider"_s), u"slider"_s);
    for (const auto &value : {u"42"_s, u"50"_s})
        EXPECT_EQ(run(m_tools.axType(slider, value)),
                  u"Set the contents of slider '10' to \"%1\"."_s.arg(value));
}

TEST_F(ElementsTest, ThreeWordsOfGtk4AreSelectedByADrag)
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

} // namespace
} // namespace morvane
