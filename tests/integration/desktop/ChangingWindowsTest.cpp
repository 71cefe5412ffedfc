#include "DesktopFixture.h"

#include "tools/screen/ElementWalk.h"

#include <QTemporaryDir>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <stop_token>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace morvane {
namespace {

/// Windows that change between the look and the act, and those that hide a part of what they hold.
class ChangingWindowsTest : public DesktopFixture {
protected:
    ChangingWindowsTest() : DesktopFixture(desktopWithoutText()) {}

    static void tellToChange(const TestProgram &program)
    {
        ::kill(pid_t(program.pid()), SIGUSR1);
        EXPECT_TRUE(waitUntil([&] {
            const auto window = LinuxApplications().focusedWindow(program.pid(), {});
            return window && window->title == "Changed"_L1;
        })) << programLog(program).toStdString();
    }
    void expectIsNotPressed(TestProgram &program, int button)
    {
        EXPECT_TRUE(
            run(m_tools.axClick(button)).startsWith(u"Error: element [%1] is no longer"_s.arg(button)));
        EXPECT_TRUE(program.isRunning());
    }
};

TEST_F(ChangingWindowsTest, AnElementThatHasBecomeAnotherIsAnErrorAndIsNotPressed)
{
    TestProgram &program = startWindow(u"widget = Gtk.Button(label='Store')\n"
                                       "widget.connect('clicked', lambda button: sys.exit(7))"_s,
                                       u"widget.set_label('Delete')"_s);
    const int button = numberOf(captureWith(u"button 'Store'"_s), u"button 'Store'"_s);
    tellToChange(program);
    EXPECT_TRUE(run(m_tools.axClick(button)).startsWith(u"Error: element [%1] is no longer"_s.arg(button)));
    EXPECT_TRUE(run(m_tools.axType(button, u"x"_s)).startsWith(u"Error: element ["_s));
    EXPECT_TRUE(program.isRunning());
    // By its new name it is pressed.
    const int renamed = numberOf(captureWith(u"button 'Delete'"_s), u"button 'Delete'"_s);
    EXPECT_TRUE(run(m_tools.axClick(renamed)).startsWith(u"Pressed button 'Delete'"_s));
    EXPECT_EQ(program.waitForExit(), 7);
}

TEST_F(ChangingWindowsTest, APictureOfAButtonThatHasBecomeAnotherIsNotPressed)
{
    // It has no name, and what it is for alone tells it from others.
    TestProgram &program = startWindow(u"widget = Gtk.Button()\n"
                                       "widget.get_accessible().set_description('Store')\n"
                                       "widget.connect('clicked', lambda button: sys.exit(7))"_s,
                                       u"widget.get_accessible().set_description('Delete')"_s);
    const int button = numberOf(captureWith(u"button 'Store'"_s), u"button 'Store'"_s);
    tellToChange(program);
    expectIsNotPressed(program, button);
}

TEST_F(ChangingWindowsTest, AnElementIsNotToldToActOnceAStopHasBeenAskedFor)
{
    TestProgram &program = startWindow(u"widget = Gtk.Box()\n"
                                       "field = Gtk.Entry()\n"
                                       "button = Gtk.Button(label='Store')\n"
                                       "button.connect('clicked', lambda button: sys.exit(7))\n"
                                       "widget.add(field)\n"
                                       "widget.add(button)"_s);
    captureWith(u"button 'Store'"_s);
    std::stop_source stop;
    stop.request_stop();
    auto told = std::async(std::launch::async, [pid = program.pid(), &stop] {
        const auto tree = desktop().elements;
        QList<AccessibilityTree::Outcome> outcomes;
        const QDeadlineTimer deadline(20s);
        const auto found = ElementWalk(*tree, deadline, {}).find(tree->application(pid, deadline).value());
        for (const AXElementInfo &info : found)
            outcomes.append(info.pressable ? tree->press(info.element, stop.get_token())
                                           : tree->setValue(info.element, u"amber"_s, stop.get_token()));
        return outcomes;
    });
    EXPECT_TRUE(waitUntil([&] { return told.wait_for(0s) == std::future_status::ready; }));
    EXPECT_THAT(told.get(),
                testing::AllOf(testing::SizeIs(2), testing::Each(AccessibilityTree::Outcome::stopped)));
    EXPECT_TRUE(capture().contains(u"text field at"_s));
    EXPECT_TRUE(program.isRunning());
}

TEST_F(ChangingWindowsTest, AnElementThatHasBeenTakenAwayIsAnErrorAndNoClick)
{
    TestProgram &program = startWindow(u"widget = Gtk.Box()\n"
                                       "field = Gtk.Entry()\n"
                                       "widget.add(field)"_s,
                                       u"field.destroy(); widget.add(Gtk.Label(label='Empty')); "
                                       "widget.show_all()"_s);
    const int field = numberOf(captureWith(u"text field"_s), u"text field"_s);
    tellToChange(program);
    EXPECT_TRUE(run(m_tools.axClick(field)).startsWith(u"Error: element [%1] is no longer"_s.arg(field)));
    const QString typed = run(m_tools.axType(field, u"x"_s));
    EXPECT_TRUE(typed.startsWith(u"Error: element ["_s)) << typed.toStdString();
}

TEST_F(ChangingWindowsTest, AButtonThatHasBeenHiddenIsNotPressed)
{
    TestProgram &program = startWindow(u"widget = Gtk.Button(label='Store')\n"
                                       "widget.connect('clicked', lambda button: sys.exit(7))"_s,
                                       u"widget.hide()"_s);
    const int button = numberOf(captureWith(u"button 'Store'"_s), u"button 'Store'"_s);
    tellToChange(program);
    expectIsNotPressed(program, button);
}

TEST_F(ChangingWindowsTest, AClickAndATextForAnElementBehindAnotherWindowDoNotReachThatWindow)
{
    // Neither is done by the element itself, so that it is clicked.
    startWindow(u"widget = Gtk.Box()\n"
                "widget.add(Gtk.Entry())\n"
                "widget.add(Gtk.Button(label='Store'))"_s);
    const QString text = captureWith({u"button 'Store'"_s, u"text field"_s});
    const int field = numberOf(text, u"text field"_s);
    const int button = numberOf(text, u"button 'Store'"_s);
    const QString typed = m_folder.filePath(u"typed"_s);
    const TestProgram &front =
        start(u"xterm"_s, {u"-maximized"_s, u"-e"_s, u"sh"_s, u"-c"_s, u"cat > "_s + typed});
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(typed); }));
    const QString problem =
        u"Error: element [%1] is behind another window. Bring its application to the front with "
        "activate_app, then run capture_screen again."_s;
    EXPECT_EQ(run(m_tools.axClick(field)), problem.arg(field));
    EXPECT_EQ(run(m_tools.axType(button, u"x\n"_s)), problem.arg(button));
    run(m_tools.typeText(u"end\n"_s));
    EXPECT_TRUE(waitUntil([&] { return QFile(typed).size() == 4; })) << "what was typed later alone";
    EXPECT_TRUE(hasTheKeyboard(front.pid()));
}

TEST_F(ChangingWindowsTest, AFieldThatTakesItsTextSlowlyIsNotGivenItTwice)
{
    // It takes its text after everybody has given up waiting for an answer.
    const QTemporaryDir folder;
    const QByteArray door = QFile::encodeName(folder.filePath(u"door"_s));
    ASSERT_EQ(::mkfifo(door.constData(), 0600), 0);
    startWindow(u"widget = Gtk.Entry()\n"
                "waiting = widget.connect('changed', lambda field: (open('%1').read(), "
                "field.disconnect(waiting)))"_s.arg(QFile::decodeName(door)));
    const int field = numberOf(captureWith(u"text field"_s), u"text field"_s);
    const QString answer = run(m_tools.axType(field, u"amber"_s));
    ASSERT_TRUE(waitUntil([&door] {
        const int opened = ::open(door.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return opened >= 0 && ::close(opened) == 0;
    })) << "it has been given a text";
    EXPECT_TRUE(answer.startsWith(u"Set the contents"_s) || answer.startsWith(u"Error: element ["_s))
        << answer.toStdString();
    const QString text = captureWith(u"text field 'amber"_s);
    EXPECT_TRUE(text.contains(u"text field 'amber' at"_s)) << text.toStdString();
}

TEST_F(ChangingWindowsTest, WhatIsScrolledOutOfTheWindowIsNotOffered)
{
    startWindow(u"widget = Gtk.ScrolledWindow()\n"
                "rows = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)\n"
                "for row in range(40):\n"
                "    rows.add(Gtk.Button(label='Row %d' % row))\n"
                "widget.add(rows)"_s);
    const QString text = captureWith({u"button 'Row 0' at"_s, u"button 'Row 2' at"_s});
    EXPECT_FALSE(text.contains(u"button 'Row 39'"_s)) << text.toStdString();
}

TEST_F(ChangingWindowsTest, AWindowThatChangesAllTheTimeIsReadAndWhatStaysInItIsPressed)
{
    TestProgram &program = startWindow(u"widget = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)\n"
                                       "stays = Gtk.Button(label='Stays')\n"
                                       "stays.connect('clicked', lambda button: sys.exit(7))\n"
                                       "widget.add(stays)\n"
                                       "rows = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)\n"
                                       "widget.add(rows)\n"
                                       "def churn():\n"
                                       "    for row in rows.get_children(): row.destroy()\n"
                                       "    for row in range(5): rows.add(Gtk.Button(label='Row'))\n"
                                       "    rows.show_all()\n"
                                       "    return True\n"
                                       "GLib.timeout_add(5, churn)"_s);
    const QString text = captureWith(u"button 'Stays'"_s);
    EXPECT_TRUE(run(m_tools.axClick(numberOf(text, u"button 'Stays'"_s))).startsWith(u"Pressed button"_s));
    EXPECT_EQ(program.waitForExit(), 7);
}

TEST_F(ChangingWindowsTest, ANameOfAMegabyteIsOneLineOfWhichTheBeginningIsTold)
{
    startWindow(u"widget = Gtk.Button(label='Store')\n"
                "widget.get_accessible().set_name('Long\\n[9] button \\'OK\\' ' + 'x' * 1000000)"_s);
    const QString text = captureWith(u"] button 'Long [9] button 'OK' xxxx"_s);
    const QStringList lines = text.split(u'\n').filter(u"] button"_s);
    EXPECT_EQ(lines.size(), 1);
    EXPECT_LT(lines.value(0).size(), 600);
    EXPECT_TRUE(run(m_tools.axClick(1)).startsWith(u"Pressed button 'Long [9]"_s));
}

TEST_F(ChangingWindowsTest, ALongTitleThatTurnsTheReadingDirectionIsToldByItsBeginning)
{
    startWindow(u"window.set_title('Bill \\u202eexe.pdf\\n' + 'x' * 1000000)\n"
                "widget = Gtk.Button(label='\\u202eOK')"_s);
    const QString text =
        captureWith({u"] button '\u202eOK'"_s, u"(frontmost window: \"Bill \u202eexe.pdf xxxx"_s});
    EXPECT_LT(text.section(u'\n', 0, 0).size(), 700);
    EXPECT_TRUE(run(m_tools.axClick(1)).startsWith(u"Pressed button '\u202eOK'"_s));
}

TEST_F(ChangingWindowsTest, AMinimizedWindowIsNotTheOneThatAProgramHadInFrontLast)
{
    const TestProgram &program = startWindow(u"widget = Gtk.Label(label='First')\n"
                                             "second = Gtk.Window(title='Second')\n"
                                             "GLib.idle_add(second.show_all)"_s,
                                             u"second.iconify()"_s);
    const auto title = [&program] {
        const auto window = LinuxApplications().focusedWindow(program.pid(), {});
        return window ? window->title : QString();
    };
    // Which of both gets the focus is for the window manager to say.
    EXPECT_TRUE(waitUntil([] { return LinuxApplications().windows({}).size() == 2; }));
    tellToChange(program);
    start(u"xterm"_s, {});
    EXPECT_TRUE(waitUntil([&] { return title() == "Changed"_L1; })) << title().toStdString();
    EXPECT_TRUE(waitUntil([] { return LinuxApplications().windows({}).size() == 2; }))
        << "the terminal's, too";
}

TEST_F(ChangingWindowsTest, WhereAWindowHasBeenMinimizedTheOneBehindItIsClicked)
{
    const QString maximized = u"window.maximize()\nwidget = Gtk.Button(label='%1')"_s;
    startWindow(maximized.arg(u"Behind"_s));
    captureWith(u"button 'Behind'"_s);
    const TestProgram &front = startWindow(maximized.arg(u"Before"_s), u"window.iconify()"_s);
    const QPoint place = placeOf(captureWith(u"button 'Before'"_s), u"button 'Before'"_s).value_or(QPoint());
    ::kill(pid_t(front.pid()), SIGUSR1);
    EXPECT_TRUE(waitUntil([&] { return !LinuxApplications().focusedWindow(front.pid(), {}); }));
    EXPECT_EQ(run(m_tools.clickAt(place)),
              u"Clicked at (%1, %2) on button 'Behind'."_s.arg(place.x()).arg(place.y()));
}

TEST_F(ChangingWindowsTest, ASliderIsSetToANumber)
{
    TestProgram &yad = start(u"yad"_s, {u"--scale"_s, u"--value=10"_s, u"--button=Leave:0"_s});
    const QString text = captureWith({u"slider"_s, u"button 'Leave'"_s});
    const int slider = numberOf(text, u"slider"_s);
    EXPECT_TRUE(run(m_tools.axType(slider, u"42"_s)).startsWith(u"Set the contents of slider"_s));
    const QString pressed = run(m_tools.axClick(numberOf(text, u"button 'Leave'"_s)));
    EXPECT_TRUE(pressed.startsWith(u"Pressed"_s)) << pressed.toStdString();
    EXPECT_EQ(yad.waitForExit(), 0);
    EXPECT_EQ(yad.log().trimmed().split(u'\n').last(), u"42"_s) << yad.log().toStdString();
}

} // namespace
} // namespace morvane
