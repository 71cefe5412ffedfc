#pragma once

class QWidget;

namespace morvane {

/// Switches `widget` on, or off; but one that has the keyboard is switched off when the keyboard has gone on,
/// since the toolkit would take it elsewhere.
void setEnabledOnceLeft(QWidget *widget, bool enabled);

} // namespace morvane
