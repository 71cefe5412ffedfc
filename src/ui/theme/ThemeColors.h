#pragma once

#include <QColor>
#include <QPalette>

namespace morvane {

/// Every colour that Morvane draws with, derived from a palette so that the desktop's choice shows through.
/// Text colours reach the AA contrast on every ground that they are drawn on.
struct ThemeColors {
    QColor window;  ///< Ground of the frame: sidebar, header, status bar.
    QColor surface; ///< Ground of the conversation and of fields.
    QColor text;
    QColor secondaryText; ///< Times, notes, counts.
    QColor accent;        ///< Links, the mark, what the user should press first.
    QColor onAccent;      ///< Text on `accent`.
    QColor border;        ///< Hairlines that only decorate.
    QColor controlBorder; ///< Frames by which a control is recognised.
    QColor hover;         ///< Ground of a row or button under the pointer.
    QColor codeGround;
    QColor userBubble;
    QColor selection;
    QColor onSelection;
    QColor focusRing;
    QColor success;
    QColor warning;
    QColor error;

    static ThemeColors fromPalette(const QPalette &palette);

    bool isDark() const { return surface.lightnessF() < 0.5; }
};

/// Morvane's own palettes, for desktops that ask for a scheme but bring no palette of their own.
QPalette lightPalette();
QPalette darkPalette();

} // namespace morvane
