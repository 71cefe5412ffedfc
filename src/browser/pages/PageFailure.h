#pragma once

#include <QString>

namespace morvane {

/// Why a page was not loaded.
struct PageFailure {
    enum class Kind {
        cancelled, ///< Another load took its place, it was stopped, or it became a download.
        failed,
        crashed, ///< The page's process has ended.
    };

    Kind kind = Kind::failed;
    QString description; ///< A sentence of ours for the user, without the address.
};

} // namespace morvane
