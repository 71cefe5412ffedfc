#pragma once

#include "async/Task.h"
#include "browser/pages/WebPage.h"

#include <QPointer>
#include <chrono>

namespace morvane {

/// Waits until the page has settled: it is loaded, and its own scripts have had a moment. Whether it has
/// within `timeout`; a page that goes away has not.
Task<bool> waitUntilReady(QPointer<WebPage> page, std::chrono::milliseconds timeout);

} // namespace morvane
