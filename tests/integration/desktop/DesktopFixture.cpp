#include "DesktopFixture.h"

#include "platform/linux/desktop/XWindows.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// The window manager names the active window before the server gives it the keyboard.
bool activeWindowHasTheKeyboard()
{
    const auto display = XDisplay::open();
    xcb_connection_t *const connection = display->connection();
    const auto active = activeWindow(*display);
    const auto focus =
        xReply(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    if (!active || !focus)
        return false;
    // Some programs give it to a window inside of theirs.
    for (xcb_window_t window = focus->focus; window > XCB_INPUT_FOCUS_POINTER_ROOT;) {
        if (window == active->window)
            return true;
        const auto tree =
            xReply(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
        window = tree ? tree->parent : xcb_window_t(XCB_WINDOW_NONE);
    }
    return false;
}

} // namespace

DesktopFixture::DesktopFixture()
    : m_tools({std::make_shared<LinuxScreenCapture>(),
               std::make_shared<LinuxTextRecognizer>(QCoreApplication::applicationDirPath() +
                                                     u"/morvane-text-recognizer"_s),
               std::make_shared<LinuxAccessibilityTree>(), std::make_shared<LinuxApplications>(),
               std::make_shared<LinuxInputEvents>(), std::make_shared<LinuxClipboard>(),
               std::make_shared<RealSequenceClock>()})
{
}

DesktopFixture::~DesktopFixture()
{
    m_programs.clear();
    // The next test's program is to be the only one.
    EXPECT_TRUE(waitUntil([] { return !LinuxApplications().frontmost(); }));
}

QString DesktopFixture::run(Task<ToolResult> task)
{
    return runTask(m_scheduler, std::move(task), std::chrono::seconds(120)).text;
}

TestProgram &DesktopFixture::start(const QString &program, const QStringList &arguments)
{
    const QString log = m_folder.filePath(QString::number(m_programs.size()) + u".log"_s);
    m_programs.push_back(
        std::make_unique<TestProgram>(program, arguments, QProcessEnvironment::systemEnvironment(), log));
    TestProgram &started = *m_programs.back();
    EXPECT_TRUE(waitUntil([&] {
        const auto front = LinuxApplications().frontmost();
        return front && front->pid == started.pid() && activeWindowHasTheKeyboard();
    })) << program.toStdString();
    return started;
}

QString DesktopFixture::captureWith(const QString &wanted)
{
    QString text;
    EXPECT_TRUE(waitUntil([&] {
        text = capture();
        return text.contains(wanted);
    })) << text.toStdString();
    return text;
}

int DesktopFixture::numberOf(const QString &text, const QString &summary)
{
    const QRegularExpression line(u"^\\[(\\d+)\\] "_s + QRegularExpression::escape(summary),
                                  QRegularExpression::MultilineOption);
    return line.match(text).captured(1).toInt();
}

} // namespace morvane
