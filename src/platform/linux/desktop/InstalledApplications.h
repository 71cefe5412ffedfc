#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <chrono>
#include <mutex>
#include <stop_token>
#include <sys/types.h>

namespace morvane {

/// The programs of the desktop's menu, by their desktop files. Any thread; calls may block for milliseconds,
/// `launch` longer.
class InstalledApplications {
public:
    /// `timeToFail` is how long a program is watched that was started: one that cannot work mostly says so
    /// within it.
    explicit InstalledApplications(std::chrono::milliseconds timeToFail) : m_timeToFail(timeToFail) {}

    /// The name in the menu of the program that a window belongs to; the window's own word for it if no
    /// desktop file tells. `windowClass` is its WM_CLASS, `applicationId` what it says its desktop file is.
    static QString nameFor(const QByteArray &windowClass, const QString &applicationId);

    /// Starts the program with this name in the menu, or the only one whose name holds it, with `addresses`.
    /// False if there is none, it ends with an error at once, or `stop` is asked for while the bus starts it.
    /// It inherits nothing of this process but the environment of the user's session.
    bool launch(const QString &name, const QList<QByteArray> &addresses, const std::stop_token &stop);

    /// Starts the user's choice for addresses like this one.
    bool launchFor(const QByteArray &scheme, const QByteArray &address, const std::stop_token &stop);

private:
    bool start(void *application, const QList<QByteArray> &addresses, const std::stop_token &stop);
    /// Whether the child is there, or has ended well, after a moment, or when `stopped` can be read.
    bool survives(pid_t child, int stopped);
    void buryTheDead();

    const std::chrono::milliseconds m_timeToFail;
    std::mutex m_mutex;
    QList<pid_t> m_children; ///< Those whose end nobody has taken note of.
};

} // namespace morvane
