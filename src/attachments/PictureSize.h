#pragma once

namespace morvane {

/// How large a picture is wanted that is only looked at.
enum class PictureSize {
    icon,      ///< As high as a line of text; none of many pixels is decoded for it.
    thumbnail, ///< Beside text.
    preview    ///< In a window of its own.
};

} // namespace morvane
