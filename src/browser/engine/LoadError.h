#pragma once

#include "browser/pages/PageFailure.h"

class QWebEngineLoadingInfo;

namespace morvane {

/// What the user is told of a load that has failed or was stopped.
PageFailure pageFailure(const QWebEngineLoadingInfo &info);

} // namespace morvane
