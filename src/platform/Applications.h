#pragma once

#include <QList>
#include <QRectF>
#include <QString>
#include <QUrl>
#include <optional>
#include <stop_token>

namespace morvane {

struct RunningApplication {
    qint64 pid = 0;
    QString name; ///< As the desktop's menu shows it.

    bool operator==(const RunningApplication &) const = default;
};

/// A window on the screen; `frame` as told in ScreenCapture.h.
struct DesktopWindow {
    qint64 pid = 0;
    int layer = 0; ///< 0 for ordinary windows, others for panels, docks and the desktop itself.
    QRectF frame;
    QString title;

    bool operator==(const DesktopWindow &) const = default;
};

/// The programs of the desktop and their windows. Any thread; calls may block, those that open something for
/// seconds. `stop` ends the waiting for an answer of the display, by DisplaySilent.
class Applications {
public:
    virtual ~Applications() = default;

    /// The program whose window has the focus.
    virtual std::optional<RunningApplication> frontmost(const std::stop_token &stop) = 0;
    /// The window of the program that has the focus or had it last.
    virtual std::optional<DesktopWindow> focusedWindow(qint64 pid, const std::stop_token &stop) = 0;
    /// All that are visible.
    virtual QList<DesktopWindow> windows(const std::stop_token &stop) = 0;
    /// The programs with windows.
    virtual QList<RunningApplication> running(const std::stop_token &stop) = 0;

    /// Brings all windows of the program to the front and gives it the focus. `stop` ends the waiting for
    /// that.
    virtual void activate(const RunningApplication &application, const std::stop_token &stop) = 0;
    /// Starts the program of this name; false if there is none, it ends at once with an error, or `stop` is
    /// asked for while it is still on its way.
    virtual bool open(const QString &name, const std::stop_token &stop) = 0;
    /// Opens the address in the program of this name, or in the user's choice if the name is empty; false as
    /// for `open`.
    virtual bool openAddress(const QUrl &address, const QString &application,
                             const std::stop_token &stop) = 0;
};

} // namespace morvane
