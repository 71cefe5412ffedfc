#pragma once

#include <exception>

namespace morvane {

/// Thrown out of a suspension of a task that was cancelled.
class Cancelled : public std::exception {
public:
    const char *what() const noexcept override { return "cancelled"; }
};

} // namespace morvane
