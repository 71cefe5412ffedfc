#pragma once

namespace morvane {

/// From now on all threads of this process have the system calls that reading an open file takes, and no
/// others. Refused are all paths, also to ask whether something is there: opening and asking for states come
/// back as a signal, see TrappedCalls.h. False if the kernel knows no such filter; nothing has changed then.
bool filterSystemCalls();

} // namespace morvane
