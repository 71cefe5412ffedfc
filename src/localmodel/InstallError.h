#pragma once

#include "base/ErrorForUser.h"

namespace morvane {

/// A failure of the local model's setup.
class InstallError : public ErrorForUser {
public:
    using ErrorForUser::ErrorForUser;
};

} // namespace morvane
