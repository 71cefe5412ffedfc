#include "platform/linux/desktop/LinuxApplications.h"

#include "base/Text.h"
#include "platform/linux/desktop/XWindows.h"

#include <QDeadlineTimer>
#include <algorithm>
#include <chrono>
#include <thread>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

/// Source of a request that comes from the user and not from a program's own wish.
constexpr uint32_t fromUser = 2;

/// How long the window manager may take to bring a window forward.
constexpr std::chrono::milliseconds timeToComeForward{1000};
constexpr std::chrono::milliseconds lookInterval{5};

QString nameOf(const XDisplay &display, const XWindow &window)
{
    QByteArray id = display.bytes(window.window, "_GTK_APPLICATION_ID");
    if (id.isEmpty())
        id = display.bytes(window.window, "_KDE_NET_WM_DESKTOP_FILE");
    const QString name =
        InstalledApplications::nameFor(display.bytes(window.window, "WM_CLASS"), QString::fromUtf8(id));
    return name.isEmpty() ? singleLine(window.title) : name;
}

DesktopWindow desktopWindow(const XWindow &window, QPoint origin)
{
    return {window.pid, window.isOrdinary ? 0 : 1, QRectF(window.frame.translated(-origin)), window.title};
}

} // namespace

std::optional<RunningApplication> LinuxApplications::frontmost(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    const auto window = display ? activeWindow(*display) : std::nullopt;
    if (!window)
        return std::nullopt;
    return RunningApplication{window->pid, nameOf(*display, *window)};
}

std::optional<DesktopWindow> LinuxApplications::focusedWindow(qint64 pid, const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    if (!display)
        return std::nullopt;
    const auto active = activeWindow(*display);
    if (active && active->pid == pid)
        return desktopWindow(*active, display->origin());
    for (const XWindow &window : stackedWindows(*display))
        if (window.pid == pid && window.isShown && window.isOrdinary)
            return desktopWindow(window, display->origin());
    return std::nullopt;
}

QList<DesktopWindow> LinuxApplications::windows(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    QList<DesktopWindow> shown;
    if (!display)
        return shown;
    const QPoint origin = display->origin();
    for (const XWindow &window : stackedWindows(*display))
        if (window.isShown)
            shown.append(desktopWindow(window, origin));
    return shown;
}

QList<RunningApplication> LinuxApplications::running(const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    QList<RunningApplication> programs;
    if (!display)
        return programs;
    for (const XWindow &window : stackedWindows(*display)) {
        const RunningApplication program{window.pid, nameOf(*display, window)};
        if (window.isOrdinary && !programs.contains(program))
            programs.append(program);
    }
    return programs;
}

void LinuxApplications::activate(const RunningApplication &application, const std::stop_token &stop)
{
    const auto display = XDisplay::open(stop);
    if (!display)
        return;
    QList<XWindow> windows = stackedWindows(*display);
    windows.removeIf([&](const XWindow &window) {
        return window.pid != application.pid || !window.isOrdinary ||
               (application.pid == 0 && nameOf(*display, window) != application.name);
    });
    // From below, so that they keep their order; the topmost gets the focus.
    std::reverse(windows.begin(), windows.end());
    for (const XWindow &window : std::as_const(windows))
        if (window.isShown)
            display->sendToWindowManager("_NET_RESTACK_WINDOW", window.window,
                                         {fromUser, XCB_NONE, XCB_STACK_MODE_ABOVE});
    if (windows.isEmpty())
        return;
    const xcb_window_t top = windows.last().window;
    display->sendToWindowManager("_NET_ACTIVE_WINDOW", top, {fromUser, XCB_CURRENT_TIME});
    // Whoever asked looks at it or types into it next. Some windows never take the keyboard.
    const auto isInFront = [&] {
        const auto active = activeWindow(*display);
        return active && active->window == top && hasKeyboard(*display, top);
    };
    const QDeadlineTimer deadline(timeToComeForward);
    while (!isInFront() && !deadline.hasExpired() && !stop.stop_requested())
        std::this_thread::sleep_for(lookInterval);
}

bool LinuxApplications::open(const QString &name, const std::stop_token &stop)
{
    return m_installed.launch(name, {}, stop);
}

bool LinuxApplications::openAddress(const QUrl &address, const QString &application,
                                    const std::stop_token &stop)
{
    const QByteArray encoded = address.toEncoded(QUrl::FullyEncoded);
    return application.isEmpty() ? m_installed.launchFor(address.scheme().toLatin1(), encoded, stop)
                                 : m_installed.launch(application, {encoded}, stop);
}

} // namespace morvane
