#pragma once

#include <QString>

namespace morvane {

/// Why an archive was not unpacked.
struct UnpackError {
    enum class Kind {
        damaged,  ///< No archive that is known here, broken, or cut off.
        hostile,  ///< Holds what no honest one does.
        tooLarge, ///< Above a limit.
        diskFull,
        disk, ///< Something cannot be read or written.
        stopped,
    };

    Kind kind;
    QString reason; ///< For the log.
};

} // namespace morvane
