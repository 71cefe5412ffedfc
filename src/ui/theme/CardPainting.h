#pragma once

class QWidget;

namespace morvane {

/// Paints the ground of a widget that groups things in a window: a rounded card in the theme's colours.
void paintCard(QWidget &widget);

} // namespace morvane
