#pragma once

#include <QString>

namespace morvane {

/// Speaks through the running screen reader without moving the focus. Main thread.
class Announcer {
public:
    virtual ~Announcer() = default;

    /// Hands `text` to the screen reader; does nothing where none runs. Never blocks.
    virtual void announce(const QString &text) = 0;
};

} // namespace morvane
