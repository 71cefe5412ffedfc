#pragma once

#include "platform/DesktopSettings.h"

#include <QStringList>

namespace morvane {

/// The settings programs of GNOME, KDE and Xfce.
class LinuxDesktopSettings final : public DesktopSettings {
public:
    bool open(Pane pane) override;

    /// The program and its arguments on a desktop that calls itself so (`XDG_CURRENT_DESKTOP`); empty if none
    /// is known.
    static QStringList command(const QString &desktop, Pane pane);
};

} // namespace morvane
