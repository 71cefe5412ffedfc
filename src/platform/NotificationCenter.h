#pragma once

#include "async/Task.h"

#include <QString>
#include <chrono>
#include <functional>
#include <optional>

namespace morvane {

/// Whether the desktop shows our notifications.
enum class NotificationAuthorization { notDetermined, denied, authorized, provisional };

/// One notification that is asked of the desktop.
struct NotificationRequest {
    QString identifier;
    QString title;
    QString body;
    QString sound; ///< Name of the sound that comes with it; empty for none.
    /// How long from now it is to come, by the calendar: a computer that sleeps does not stop it. Nothing
    /// means at once.
    std::optional<std::chrono::milliseconds> delay;

    bool operator==(const NotificationRequest &) const = default;
};

/// The desktop's notifications, those that come later included, even when the program has ended. Main thread.
class NotificationCenter {
public:
    /// What becomes of a notification that arrives while the program runs.
    enum class Presentation { none, banner };
    using WillPresent = std::function<Task<Presentation>(NotificationRequest)>;

    virtual ~NotificationCenter() = default;

    /// Who is asked before a notification is presented; without one all are.
    virtual void setDelegate(WillPresent willPresent) = 0;

    /// Asks the user, where the desktop does so, for banners and sounds. Both answers come when the desktop
    /// answers.
    virtual Task<bool> requestAuthorization() = 0;
    virtual Task<NotificationAuthorization> authorizationStatus() = 0;

    /// Hands over a request. One with a delay replaces a waiting one with the same identifier, and what is
    /// presented takes the place of what is still there of it. Never blocks, and where nobody shows
    /// notifications nothing happens.
    virtual void add(const NotificationRequest &request) = 0;

    /// Takes back a request that waits for its time. One whose time has just come has left already, as far as
    /// the user, who is elsewhere, is concerned: its banner is shown if the program is not in front.
    virtual void removePending(const QString &identifier) = 0;
};

} // namespace morvane
