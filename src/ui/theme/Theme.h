#pragma once

#include "platform/ColorScheme.h"
#include "ui/theme/ThemeColors.h"

#include <QObject>
#include <QPalette>

namespace morvane {

/// Keeps the program's palette in step with the desktop's colour scheme. Views read colours through
/// ThemeColors::fromPalette(palette()) and repaint on QEvent::PaletteChange. Main thread.
class Theme : public QObject {
    Q_OBJECT
public:
    /// Sets the style and the first palette; `scheme` must outlive the theme. Construct after QApplication
    /// and before the first widget.
    explicit Theme(const ColorScheme &scheme, QObject *parent = nullptr);

    /// The palette to use: the desktop's own where it agrees with the wish for light or dark, otherwise ours.
    /// `isToolkitDefault` tells that the desktop brought no palette of its own.
    enum class Origin { desktop, toolkitDefault };
    static QPalette chosen(const QPalette &current, Origin origin, ColorScheme::Preference preference);

private:
    void apply();

    const ColorScheme &m_scheme;
    QPalette m_desktopPalette;
    Origin m_origin = Origin::toolkitDefault;
};

} // namespace morvane
