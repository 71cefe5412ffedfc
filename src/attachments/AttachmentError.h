#pragma once

#include "base/ErrorForUser.h"

namespace morvane {

/// Why a file could not be attached.
class AttachmentError : public ErrorForUser {
public:
    using ErrorForUser::ErrorForUser;
};

} // namespace morvane
