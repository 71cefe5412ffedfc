#pragma once

#include "tools/screen/SequenceClock.h"

namespace morvane {

/// Real time.
class RealSequenceClock final : public SequenceClock {
public:
    void sleep(std::chrono::milliseconds duration, const std::stop_token &stop) override;
    QDeadlineTimer deadline(std::chrono::milliseconds limit) override { return QDeadlineTimer(limit); }
};

} // namespace morvane
