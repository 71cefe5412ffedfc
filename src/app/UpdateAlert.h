#pragma once

#include "update/ProgramVersion.h"
#include "update/UpdateInfo.h"

#include <variant>

namespace morvane {

/// What a check for updates tells the user until they have answered.
struct UpdateAlert {
    struct UpToDate {
        ProgramVersion version;
    };
    struct CheckFailed {
        QString reason;
    };
    struct Available {
        UpdateInfo update;
    };
    struct Required {
        UpdateInfo update;
    };

    std::variant<UpToDate, CheckFailed, Available, Required> content;
};

} // namespace morvane
