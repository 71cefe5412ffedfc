#pragma once

#include "async/Task.h"
#include "platform/DesktopSettings.h"
#include "platform/NotificationCenter.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <array>
#include <chrono>
#include <memory>
#include <optional>

namespace morvane {

class Announcer;
class InputEvents;
class Scheduler;
class ScreenCapture;

/// What the desktop lets the tools do, as far as it tells, and how the user is led to change it. Every change
/// for the better is announced. Main thread.
class PermissionsModel : public QObject {
    Q_OBJECT
public:
    enum class Permission { screenRecording, accessibility, notifications };

    /// All but the shared ones outlive the model, and the scheduler is shut down before it goes. The shared
    /// ones are asked on background threads, since a display may take long to answer. Nothing is asked yet.
    PermissionsModel(Scheduler &scheduler, Announcer &announcer, std::shared_ptr<ScreenCapture> screen,
                     std::shared_ptr<InputEvents> input, NotificationCenter &notifications,
                     DesktopSettings &settings, QObject *parent = nullptr);

    bool isConfigured(Permission permission) const { return m_configured[std::size_t(permission)]; }

    /// Asks for all states. Does nothing while it is at it.
    void refresh();
    /// Has the desktop ask the user, and looks again after a while.
    void request(Permission permission);
    /// Shows the desktop's settings for the row with this title; announces it where there are none.
    void openSettingsFor(const QString &row);

    static DesktopSettings::Pane securityPaneFor(const QString &row);

Q_SIGNALS:
    void changed();
    /// There is nothing to be opened; for the eyes, too.
    void settingsUnknown();

private:
    /// What the display tells.
    struct Flags {
        bool screenRecording;
        bool accessibility;
    };

    static Task<std::optional<Flags>> readFlags(std::shared_ptr<ScreenCapture> screen,
                                                std::shared_ptr<InputEvents> input);
    static Task<void> check(QPointer<PermissionsModel> self);
    void take(const std::optional<Flags> &flags);
    void set(Permission permission, bool isConfigured);
    void pollStatus(std::chrono::milliseconds after);
    static Task<void> poll(QPointer<PermissionsModel> self, std::chrono::milliseconds after);
    static Task<void> askForNotificationStatus(QPointer<PermissionsModel> self,
                                               NotificationCenter *notifications);
    static Task<void> requestNotifications(QPointer<PermissionsModel> self,
                                           NotificationCenter *notifications);

    Scheduler &m_scheduler;
    Announcer &m_announcer;
    std::shared_ptr<ScreenCapture> m_screen;
    std::shared_ptr<InputEvents> m_input;
    NotificationCenter &m_notifications;
    DesktopSettings &m_settings;
    std::array<bool, 3> m_configured{};
    bool m_checking = false;
};

} // namespace morvane
