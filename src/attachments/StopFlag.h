#pragma once

#include "base/FileDescriptor.h"

namespace morvane {

/// Tells work on another thread, once and for good, that nobody waits for it any more. Any thread.
class StopFlag {
public:
    /// Throws std::system_error if the system is out of descriptors.
    StopFlag();

    void raise();
    bool isRaised() const;

    /// Becomes readable when the flag is raised.
    int descriptor() const { return m_event.get(); }

private:
    FileDescriptor m_event;
};

} // namespace morvane
