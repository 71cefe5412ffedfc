#include "DesktopFixture.h"

#include "platform/linux/desktop/XDisplay.h"
#include "support/FakeDesktop.h"

#include <QProcess>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The one screen of the tests' server, shared out to two monitors.
class MonitorsTest : public DesktopFixture {
protected:
    ~MonitorsTest() override
    {
        randr({u"--delmonitor"_s, u"PRIMARY"_s});
        randr({u"--delmonitor"_s, u"OTHER"_s});
    }

    static void share(const QRect &primary, const QRect &other)
    {
        // The server's output belongs to one of them, or there would be a third for it.
        randr({u"--setmonitor"_s, u"*PRIMARY"_s, place(primary), u"screen"_s});
        randr({u"--setmonitor"_s, u"OTHER"_s, place(other), u"none"_s});
        EXPECT_EQ(XDisplay::open()->monitors(), QList<QRect>({primary, other}));
    }

    /// A form with a button, and where a capture has seen it.
    struct Form {
        TestProgram &program;
        QString text;
        std::optional<QPoint> button;
        std::optional<QPoint> word; ///< As it was read in the picture.
    };
    Form showForm(const QString &corner)
    {
        TestProgram &yad = start(u"yad"_s, {u"--form"_s, u"--geometry=300x200+"_s + corner, u"--field=Name"_s,
                                            u"--button=Leave:0"_s});
        const QString text = captureWith({u"Leave  [click"_s, u"button 'Leave'"_s});
        return {yad, text, placeOf(text, u"button 'Leave'"_s), placeOfText(text, u"Leave"_s)};
    }

private:
    /// In pixels and, behind the strokes, millimetres.
    static QString place(const QRect &frame)
    {
        return u"%1/300x%2/200+%3+%4"_s.arg(frame.width()).arg(frame.height()).arg(frame.x()).arg(frame.y());
    }

    static void randr(const QStringList &arguments)
    {
        QProcess xrandr;
        xrandr.setProcessChannelMode(QProcess::MergedChannels);
        xrandr.start(u"xrandr"_s, arguments);
        EXPECT_TRUE(xrandr.waitForFinished() && xrandr.exitCode() == 0)
            << xrandr.readAll().toStdString() << xrandr.errorString().toStdString();
    }
};

TEST_F(MonitorsTest, AProgramLeftOfThePrimaryMonitorIsSeenAndClickedAtNegativeCoordinates)
{
    share({640, 0, 640, 960}, {0, 0, 640, 960});
    const Form form = showForm(u"100+200"_s);
    EXPECT_TRUE(form.text.contains(u"Screen region: 640 x 960 points with top-left corner at (-640, 0)."_s))
        << form.text.toStdString();
    ASSERT_TRUE(form.button && form.word) << form.text.toStdString();
    EXPECT_LT(form.button->x(), 0);
    EXPECT_LE((*form.button - *form.word).manhattanLength(), 4) << form.text.toStdString();
    EXPECT_EQ(run(m_tools.clickAt(*form.word)),
              u"Clicked at (%1, %2) on button 'Leave'."_s.arg(form.word->x()).arg(form.word->y()));
    EXPECT_EQ(form.program.waitForExit(), 0);
}

TEST_F(MonitorsTest, AProgramAboveThePrimaryMonitorIsSeenAndPressed)
{
    share({0, 480, 1280, 480}, {0, 0, 1280, 480});
    const Form form = showForm(u"300+100"_s);
    EXPECT_TRUE(form.text.contains(u"Screen region: 1280 x 480 points with top-left corner at (0, -480)."_s))
        << form.text.toStdString();
    ASSERT_TRUE(form.button && form.word) << form.text.toStdString();
    EXPECT_LT(form.button->y(), 0);
    EXPECT_LE((*form.button - *form.word).manhattanLength(), 4) << form.text.toStdString();
    const QString answer = run(m_tools.axClick(numberOf(form.text, u"button 'Leave'"_s)));
    EXPECT_TRUE(answer.startsWith(u"Pressed button"_s)) << answer.toStdString();
    EXPECT_EQ(form.program.waitForExit(), 0);
}

TEST_F(MonitorsTest, APointBeyondTheScreenIsItsEdgeOnThatSide)
{
    share({640, 0, 640, 960}, {0, 0, 640, 960});
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    LinuxScreenCapture screen;
    run(m_tools.moveCursor({most, most}));
    EXPECT_EQ(screen.pointer({}), QPoint(639, 959));
    run(m_tools.moveCursor({least, least}));
    EXPECT_EQ(screen.pointer({}), QPoint(-640, 0));
    LinuxAccessibilityTree elements{QString()};
    EXPECT_FALSE(elements.elementAt(QPoint(most, most), {}));
    EXPECT_FALSE(elements.elementAt(QPoint(least, least), {}));
}

TEST_F(MonitorsTest, OnlyTheMonitorOfTheFrontmostWindowIsRead)
{
    share({0, 0, 640, 960}, {640, 0, 640, 960});
    start(u"yad"_s, {u"--info"_s, u"--geometry=300x200+100+200"_s, u"--text=Sinister"_s});
    start(u"yad"_s, {u"--info"_s, u"--geometry=300x200+800+200"_s, u"--text=Dexterous"_s});
    const QString text = captureWith(u"Dexterous"_s);
    EXPECT_FALSE(text.contains(u"Sinister"_s)) << text.toStdString();
    EXPECT_TRUE(text.contains(u"Screen region: 640 x 960 points with top-left corner at (640, 0)."_s))
        << text.toStdString();
}

using WaylandTest = DesktopFixture;

TEST_F(WaylandTest, WithoutARoadToTheScreenTheToolsSayWhatIsMissing)
{
    // Where Wayland draws the windows, the X server that may be there as well sees little and reaches nobody.
    DesktopLog log;
    ScreenTools tools(desktop(std::make_shared<FakeSequenceClock>(log)));
    qputenv("WAYLAND_DISPLAY", "wayland-0");
    const QString seen = run(tools.captureScreen());
    const QString clicked = run(tools.clickAt({1, 1}));
    qunsetenv("WAYLAND_DISPLAY");
    EXPECT_TRUE(seen.startsWith(u"Error: Morvane needs Screen Recording permission to see your screen."_s))
        << seen.toStdString();
    EXPECT_TRUE(clicked.startsWith(u"Error: Morvane needs Accessibility permission to control your Mac."_s))
        << clicked.toStdString();
}

} // namespace
} // namespace morvane
