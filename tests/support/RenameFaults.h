#pragma once

#include <QList>

namespace morvane {

/// Lets the next calls of renameat2 by this program fail, for as long as it lives. One at a time; any thread.
class RenameFaults {
public:
    /// The error number of each call in turn; 0 for a call that the system carries out, as all after them.
    explicit RenameFaults(QList<int> errors);
    ~RenameFaults();
    RenameFaults(const RenameFaults &) = delete;
    RenameFaults &operator=(const RenameFaults &) = delete;
};

} // namespace morvane
