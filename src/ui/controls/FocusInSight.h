#pragma once

class QScrollArea;

namespace morvane {

/// From now on `area` scrolls to whatever in it takes the keyboard, from wherever that comes.
void keepFocusInSight(QScrollArea &area);

} // namespace morvane
