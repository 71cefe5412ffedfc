#pragma once

#include "platform/PasteSource.h"

#include <chrono>

namespace morvane {

/// Reads the selections of the X server on a background thread, over a connection of its own.
class LinuxPasteSource final : public PasteSource {
public:
    /// `patience` is how long the other program may keep the paste waiting beyond what its bytes earn
    /// (XSelectionReader). Nothing else waits for it, so that a busy one may take its time.
    explicit LinuxPasteSource(std::chrono::milliseconds patience = std::chrono::seconds(5))
        : m_patience(patience)
    {
    }

    /// Not on Wayland, where a program without the focus is told nothing.
    bool isReachable() const override;
    Task<std::expected<PasteContent, PasteFailure>> read(Selection selection) override;

private:
    const std::chrono::milliseconds m_patience;
};

} // namespace morvane
