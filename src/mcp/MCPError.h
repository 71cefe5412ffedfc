#pragma once

#include "base/ErrorForUser.h"

namespace morvane {

/// Why a tool server could not be used, in words for the user and the model.
class MCPError : public ErrorForUser {
public:
    using ErrorForUser::ErrorForUser;
};

} // namespace morvane
