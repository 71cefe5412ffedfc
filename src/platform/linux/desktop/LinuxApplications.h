#pragma once

#include "platform/Applications.h"
#include "platform/linux/desktop/InstalledApplications.h"

#include <chrono>

namespace morvane {

/// Windows as the window manager of an X server tells of them, programs as their desktop files do.
class LinuxApplications final : public Applications {
public:
    /// `timeToFail` as InstalledApplications has it.
    explicit LinuxApplications(std::chrono::milliseconds timeToFail = std::chrono::milliseconds(500))
        : m_installed(timeToFail)
    {
    }

    std::optional<RunningApplication> frontmost(const std::stop_token &stop) override;
    std::optional<DesktopWindow> focusedWindow(qint64 pid, const std::stop_token &stop) override;
    QList<DesktopWindow> windows(const std::stop_token &stop) override;
    QList<RunningApplication> running(const std::stop_token &stop) override;
    void activate(const RunningApplication &application, const std::stop_token &stop) override;
    bool open(const QString &name, const std::stop_token &stop) override;
    bool openAddress(const QUrl &address, const QString &application, const std::stop_token &stop) override;

private:
    InstalledApplications m_installed;
};

} // namespace morvane
