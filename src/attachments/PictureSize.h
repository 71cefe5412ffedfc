#pragma once

namespace morvane {

/// How large a picture is wanted that is only looked at.
enum class PictureSize {
    thumbnail, ///< Beside text.
    preview    ///< In a window of its own.
};

} // namespace morvane
