#pragma once

#include "base/ErrorForUser.h"

namespace morvane {

/// Why an update was not installed.
class UpdateInstallError : public ErrorForUser {
public:
    using ErrorForUser::ErrorForUser;
};

} // namespace morvane
