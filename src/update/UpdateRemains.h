#pragma once

#include "update/RunningBundle.h"

namespace morvane {

/// Where the power failed between the two moves of an update, the place of the bundle is empty, and both
/// bundles are in the folder of that update. Brings the one back whose program was started there. The path of
/// the program in its place, to be started in the stead of this one; empty for every other program. Blocks
/// for a moment.
QString returnToPlace(const QString &program);

/// Removes what updates that did not come to their end left beside the bundle, and in the folder for
/// downloads. What another process is working on stays, and everything that is not the user's own; the only
/// bundle of a place that is empty returns to it. Blocks; any thread but the main one.
void removeUpdateRemains(const RunningBundle &bundle, const QString &downloads);

} // namespace morvane
