#pragma once

#include <QString>

namespace morvane {

/// What the agent asks of the desktop's notifications and sounds. Main thread.
class NotificationPort {
public:
    /// Whether a finished request ended with an answer or with an error.
    enum class Outcome { answer, error };

    virtual ~NotificationPort() = default;

    /// Tells the user that a request has ended, with its answer or its error text.
    virtual void notify(const QString &response, Outcome outcome) = 0;
    /// Plays one of the program's named sounds, such as "MorvaneCancelled".
    virtual void playSound(const QString &name) = 0;
};

} // namespace morvane
