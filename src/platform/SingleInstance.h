#pragma once

#include <QByteArray>
#include <functional>

namespace morvane {

/// What the desktop handed to a start, so that the window of the running instance may come to the front.
/// Both are empty for a start from a terminal.
struct ActivationToken {
    QByteArray startupID; ///< X11 startup notification (`DESKTOP_STARTUP_ID`).
    QByteArray xdgToken;  ///< Wayland activation (`XDG_ACTIVATION_TOKEN`).

    bool operator==(const ActivationToken &) const = default;
};

/// Keeps one instance of the program for each data folder: a later start hands its activation to the
/// running instance. Main thread.
class SingleInstance {
public:
    enum class Claim {
        first,      ///< This process is the instance now, until it ends.
        handedOver, ///< The running instance has taken the activation; this process has nothing left to do.
        unanswered, ///< Another process is the instance but does not answer.
    };

    virtual ~SingleInstance() = default;

    /// Settles which process is the instance. Needs no application object. Returns at once for the first
    /// process; a later one waits for the running instance to take `token`, at most a few seconds.
    virtual Claim claim(const ActivationToken &token) = 0;

    /// Calls `onActivation` for every later start, those since claim() included. Needs an event loop and
    /// a claim that made this process the first.
    virtual void listen(std::function<void(const ActivationToken &)> onActivation) = 0;
};

} // namespace morvane
