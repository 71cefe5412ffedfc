#pragma once

#include "browser/sites/BrowserSites.h"

#include <QString>

namespace morvane {

/// The HTML of a new tab, which needs nothing from elsewhere and runs no script.
QString startPage(const BrowserSites &sites);

} // namespace morvane
