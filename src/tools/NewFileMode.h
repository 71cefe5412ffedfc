#pragma once

namespace morvane {

/// The permission bits that a new file of this process gets: read and write for all, less its umask. The
/// umask is read without changing it, which would open a gap for other threads. Any thread.
unsigned newFileMode();

} // namespace morvane
