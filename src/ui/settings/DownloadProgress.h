#pragma once

#include <optional>

class QProgressBar;

namespace morvane {

/// Shows how far a download is, 0 to 1, by the bar and by its accessible name; without a fraction the bar
/// only shows that something is going on.
void showDownloadProgress(QProgressBar &bar, std::optional<double> fraction);

} // namespace morvane
