#include "DesktopFixture.h"

#include "base/InstalledFiles.h"
#include "platform/DisplaySilent.h"
#include "platform/linux/desktop/XWindows.h"
#include "support/FakeDesktop.h"

#include <QFile>
#include <QGuiApplication>
#include <algorithm>
#include <csignal>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Ten times as long as the program gives others to answer: here they may have to share a processor.
constexpr std::chrono::seconds lookLimit{3};

/// Does what a user does in front of a window that takes no keys.
void turnTo(qint64 pid)
{
    LinuxApplications applications;
    for (const RunningApplication &program : applications.running({}))
        if (program.pid == pid)
            applications.activate(program, {});
}

/// The two numbers that the first line of this form has.
std::optional<QPoint> place(const QString &text, const QString &form)
{
    const auto match = QRegularExpression(form, QRegularExpression::MultilineOption).match(text);
    if (!match.hasMatch())
        return std::nullopt;
    return QPoint(match.captured(1).toInt(), match.captured(2).toInt());
}

} // namespace

Desktop DesktopFixture::desktop(std::shared_ptr<SequenceClock> clock)
{
    const InstalledFiles files = InstalledFiles::aroundProgram();
    return {std::make_shared<LinuxScreenCapture>(),
            std::make_shared<LinuxTextRecognizer>(files.helper(u"morvane-text-recognizer"_s)),
            std::make_shared<LinuxAccessibilityTree>(files.helper(u"morvane-action-carrier"_s), lookLimit),
            std::make_shared<LinuxApplications>(),
            std::make_shared<LinuxInputEvents>(),
            std::make_shared<LinuxClipboard>(),
            std::move(clock)};
}

Desktop DesktopFixture::desktopWithoutText()
{
    Desktop without = desktop();
    without.recognizer = std::make_shared<FakeTextRecognizer>();
    return without;
}

DesktopFixture::~DesktopFixture()
{
    m_programs.clear();
    // The next test's program is to be the only one.
    EXPECT_TRUE(waitUntil([] { return !LinuxApplications().frontmost({}); }));
}

bool DesktopFixture::hasTheKeyboard(qint64 pid)
{
    const auto display = XDisplay::open();
    const auto active = activeWindow(*display);
    return active && active->pid == pid && hasKeyboard(*display, active->window);
}

QString DesktopFixture::run(Task<ToolResult> task)
{
    return runTask(m_scheduler, std::move(task), std::chrono::seconds(120)).text;
}

TestProgram &DesktopFixture::start(const QString &program, const QStringList &arguments,
                                   const QMap<QString, QString> &variables)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (auto variable = variables.cbegin(); variable != variables.cend(); ++variable)
        environment.insert(variable.key(), variable.value());
    const QString log = m_folder.filePath(QString::number(m_programs.size()) + u".log"_s);
    m_programs.push_back(std::make_unique<TestProgram>(program, arguments, environment, log));
    TestProgram &started = *m_programs.back();
    // A window manager on a busy machine may still be reading the keyboard that the test before has changed.
    EXPECT_TRUE(waitUntil(
        [&] {
            if (!hasTheKeyboard(started.pid()))
                turnTo(started.pid());
            return hasTheKeyboard(started.pid());
        },
        std::chrono::minutes(2)))
        << program.toStdString();
    return started;
}

TestProgram &DesktopFixture::startWindow(const QString &widget, const QString &change)
{
    const QString script = u"import sys, gi\n"
                           "gi.require_version('Gtk', '3.0')\n"
                           "from gi.repository import GLib, Gtk\n"
                           "window = Gtk.Window(title='Before', default_width=300, default_height=200)\n"
                           "window.connect('destroy', Gtk.main_quit)\n"
                           "%1\n"
                           "def change():\n"
                           "    %2\n"
                           "    window.set_title('Changed')\n"
                           "GLib.unix_signal_add(GLib.PRIORITY_LOW, 10, change)\n"
                           "window.add(widget)\n"
                           "window.show_all()\n"
                           "Gtk.main()\n"_s.arg(widget, change);
    return start(u"/usr/bin/python3"_s, {u"-c"_s, script});
}

QString DesktopFixture::captureWith(const QStringList &wanted)
{
    QString text;
    EXPECT_TRUE(waitUntil([&] {
        text = capture();
        return std::all_of(wanted.begin(), wanted.end(),
                           [&text](const QString &one) { return text.contains(one); });
    })) << text.toStdString();
    return text;
}

QPoint DesktopFixture::placeOfShown(const QString &words)
{
    std::optional<QPoint> found;
    QString text;
    EXPECT_TRUE(waitUntil([&] {
        text = capture();
        found = placeOfText(text, words);
        return found.has_value();
    })) << text.toStdString();
    return found.value_or(QPoint());
}

QPoint DesktopFixture::clickOn(const QString &summary)
{
    const QPoint told = placeOf(captureWith(summary), summary).value_or(QPoint());
    run(m_tools.clickAt(told));
    return told;
}

void DesktopFixture::holdUp(const TestProgram &program)
{
    const auto isStopped = [&] {
        QFile stat(u"/proc/%1/stat"_s.arg(program.pid()));
        return stat.open(QIODevice::ReadOnly) && stat.readAll().contains(") T ");
    };
    EXPECT_TRUE(waitUntil([&] {
        ::kill(pid_t(program.pid()), SIGSTOP);
        EXPECT_TRUE(waitUntil(isStopped));
        if (!displayIsSilent())
            return true;
        goOn(program);
        EXPECT_TRUE(waitUntil([] { return !displayIsSilent(); }));
        return false;
    }));
}

void DesktopFixture::goOn(const TestProgram &program)
{
    ::kill(pid_t(program.pid()), SIGCONT);
}

bool DesktopFixture::displayIsSilent()
{
    try {
        return XDisplay::open({}, std::chrono::seconds(1)) == nullptr;
    } catch (const DisplaySilent &) {
        return true;
    }
}

bool DesktopFixture::copies(const QString &wanted)
{
    run(m_tools.pressKey(u"command+c"_s));
    return waitUntil([&] { return run(m_tools.clipboardRead()) == u"Clipboard content: "_s + wanted; });
}

int DesktopFixture::numberOf(const QString &text, const QString &summary)
{
    const QRegularExpression line(u"^\\[(\\d+)\\] "_s + QRegularExpression::escape(summary),
                                  QRegularExpression::MultilineOption);
    return line.match(text).captured(1).toInt();
}

std::optional<QPoint> DesktopFixture::placeOf(const QString &text, const QString &summary)
{
    return place(text, u"^\\[\\d+\\] "_s + QRegularExpression::escape(summary) +
                           u" at \\((-?\\d+), (-?\\d+)\\)$"_s);
}

std::optional<QPoint> DesktopFixture::placeOfText(const QString &text, const QString &words)
{
    return place(text,
                 u"^.*"_s + QRegularExpression::escape(words) + u".*  \\[click (-?\\d+),(-?\\d+)\\]$"_s);
}

} // namespace morvane
