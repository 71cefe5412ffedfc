#pragma once

#include "platform/SingleInstance.h"

class QWindow;

namespace morvane {

/// Brings a window of ours to the user in ways that window managers honour. Main thread.
class WindowRaiser {
public:
    virtual ~WindowRaiser() = default;

    /// Shows the window above the others and gives it the focus, also from another virtual desktop or out
    /// of the task bar. `token` is what the user's action left for it; empty if there is none.
    virtual void activate(QWindow &window, const ActivationToken &token) = 0;

    /// Shows a visible window above the others and leaves the focus where it is.
    virtual void raiseWithoutFocus(QWindow &window) = 0;
};

} // namespace morvane
