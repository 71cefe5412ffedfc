#pragma once

class QScrollArea;
class QWidget;

namespace morvane {

/// Scrolls a column that keeps to the middle of the window and is as wide as it may be. Takes it over.
QScrollArea *scrollCentered(QWidget *column);

} // namespace morvane
