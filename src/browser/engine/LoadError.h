#pragma once

#include "browser/pages/PageFailure.h"

class QWebEngineLoadingInfo;

namespace morvane {

/// What the user is told of a load that has failed or was stopped.
PageFailure pageFailure(const QWebEngineLoadingInfo &info);

/// What the user is told of one that was under way when the connections ended with what sites have stored.
QString connectionsClearedAway();

} // namespace morvane
