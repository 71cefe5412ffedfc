#pragma once

namespace morvane {

/// A rectangle of the picture, from its first column and row to those behind its last.
struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool operator==(const Box &) const = default;
};

} // namespace morvane
