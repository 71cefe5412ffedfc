#pragma once

#include "update/RunningBundle.h"

namespace morvane {

/// Removes what updates that did not come to their end left beside the bundle, and in the folder for
/// downloads. What another process is working on stays, and everything that is not the user's own. Blocks;
/// any thread but the main one.
void removeUpdateRemains(const RunningBundle &bundle, const QString &downloads);

} // namespace morvane
