#pragma once

#include "async/Task.h"
#include "browser/pages/WebPage.h"

#include <QPointer>
#include <QString>
#include <QVariant>
#include <chrono>

namespace morvane {

/// The value of a script in the page. Invalid when it failed or has none, when `limit` passed first, and when
/// the page went. A page that has not answered after `longEnoughToAnswer` is told so.
Task<QVariant> evaluateWithTimeout(QString script, QPointer<WebPage> page, std::chrono::milliseconds limit);

/// A page that needs longer than this for a script is taken for hung when it is left.
inline constexpr std::chrono::seconds longEnoughToAnswer{8};

} // namespace morvane
