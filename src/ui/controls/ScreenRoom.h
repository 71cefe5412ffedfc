#pragma once

#include <QSize>

class QWidget;

namespace morvane {

/// The largest that a window can be on the screen of `widget`, with what a window manager draws around it.
QSize screenRoom(const QWidget &widget);

} // namespace morvane
