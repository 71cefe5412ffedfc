#pragma once

#include <QProgressBar>
#include <functional>
#include <optional>

namespace morvane {

/// Shows how far a download is, to the eye and by its accessible name. Tells of whole percents only, so that
/// progress in small steps says no more than can be seen.
class DownloadProgressBar : public QProgressBar {
    Q_OBJECT
public:
    /// What the bar is called with so many percent done, or while that is not known.
    using Naming = std::function<QString(std::optional<int>)>;

    explicit DownloadProgressBar(QWidget *parent = nullptr);
    explicit DownloadProgressBar(Naming naming, QWidget *parent = nullptr);

    /// From 0 to 1; without a fraction the bar only shows that something is going on.
    void showFraction(std::optional<double> fraction);
    /// Whole percents, nothing while it is not known how far the download is.
    std::optional<int> percent() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Naming m_naming;
};

} // namespace morvane
