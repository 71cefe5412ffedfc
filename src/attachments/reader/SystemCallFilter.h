#pragma once

namespace morvane {

/// Gives up for good what reading a file does not need of the system: the network, other programs and
/// processes, changes to files. Such calls fail from now on. False if the system knows no such filter.
bool filterSystemCalls();

} // namespace morvane
