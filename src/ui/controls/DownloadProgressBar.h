#pragma once

#include <QProgressBar>
#include <optional>

namespace morvane {

/// Shows how far a download is, to the eye and by its accessible name. Tells of whole percents only, so that
/// progress in small steps says no more than can be seen.
class DownloadProgressBar : public QProgressBar {
    Q_OBJECT
public:
    explicit DownloadProgressBar(QWidget *parent = nullptr);

    /// From 0 to 1; without a fraction the bar only shows that something is going on.
    void showFraction(std::optional<double> fraction);
    /// Whole percents, nothing while it is not known how far the download is.
    std::optional<int> percent() const;
};

} // namespace morvane
