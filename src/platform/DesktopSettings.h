#pragma once

namespace morvane {

/// The desktop's own settings of what programs may do. Main thread.
class DesktopSettings {
public:
    enum class Pane { screenCapture, accessibility, allFiles, notifications, privacy };

    virtual ~DesktopSettings() = default;

    /// Shows the pane, or the nearest that this desktop has; false if none is known. Returns at once.
    virtual bool open(Pane pane) = 0;
};

} // namespace morvane
