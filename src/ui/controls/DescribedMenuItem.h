#pragma once

#include <QString>

class QAction;
class QMenu;

namespace morvane {

/// Has `hint` heard with an entry of a menu, behind its name: the toolkit's own entries have no description.
/// Once for an entry, and before anybody has asked for it.
void describeMenuItem(QMenu &menu, QAction &entry, const QString &hint);

} // namespace morvane
