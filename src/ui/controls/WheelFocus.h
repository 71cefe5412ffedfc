#pragma once

class QWidget;

namespace morvane {

/// Makes `control` leave the wheel to the column that it scrolls in, unless the user works in it: otherwise
/// scrolling past a slider or a list would change a setting unnoticed.
void takeWheelOnlyWithFocus(QWidget *control);

} // namespace morvane
