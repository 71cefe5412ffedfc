#pragma once

#include "platform/WindowRaiser.h"

namespace morvane {

/// Speaks to the window manager in its own messages on X11, since a plain raise is ignored by several;
/// elsewhere asks the platform with the activation token. Needs the application object.
class LinuxWindowRaiser : public WindowRaiser {
public:
    void activate(QWindow &window, const ActivationToken &token) override;
    void raiseWithoutFocus(QWindow &window) override;
};

} // namespace morvane
