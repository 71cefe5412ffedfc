#pragma once

#include "base/ErrorForUser.h"

namespace morvane {

/// Why there is no manifest although the server answered.
class UpdateCheckerError : public ErrorForUser {
public:
    /// The answer is no success, or no manifest.
    static UpdateCheckerError badResponse()
    {
        return UpdateCheckerError(QStringLiteral(
            "Could not reach the update server. Check your internet connection and try again."));
    }

private:
    using ErrorForUser::ErrorForUser;
};

} // namespace morvane
