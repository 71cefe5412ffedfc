#pragma once

#include <QColor>

namespace morvane {

/// Contrast of two opaque colours as WCAG 2.1 defines it: 1 (alike) to 21 (black on white).
double contrastRatio(const QColor &first, const QColor &second);

/// `share` of `over` laid on `under`; 0 gives `under`, 1 gives `over`. Both opaque.
QColor blended(const QColor &under, const QColor &over, double share);

/// `color`, moved towards black or white as little as needed to reach `ratio` on `ground`. If no shade
/// reaches it, the one of black and white that comes closer.
QColor readable(const QColor &color, const QColor &ground, double ratio);

/// Least contrast of text (WCAG 2.1, success criterion 1.4.3, level AA).
inline constexpr double textContrast = 4.5;
/// Least contrast of icons, frames of controls and focus marks (success criterion 1.4.11, level AA).
inline constexpr double graphicsContrast = 3.0;

} // namespace morvane
