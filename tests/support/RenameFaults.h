#pragma once

#include <QByteArray>
#include <QList>

namespace morvane {

/// Lets the next calls of renameat2 by this program fail or wait, for as long as it lives, and by processes
/// that it forks meanwhile. One at a time; any thread.
class RenameFaults {
public:
    /// A call that the system carries out when somebody opens the pipe for writing.
    static constexpr int held = -1;

    /// The error number of each call in turn; 0 for a call that the system carries out, as all after them.
    explicit RenameFaults(QList<int> errors, const QByteArray &pipe = {});
    ~RenameFaults();
    RenameFaults(const RenameFaults &) = delete;
    RenameFaults &operator=(const RenameFaults &) = delete;
};

} // namespace morvane
