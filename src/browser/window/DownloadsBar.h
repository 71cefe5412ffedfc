#pragma once

#include "browser/tabs/Downloads.h"

#include <QList>
#include <QScrollArea>

class QLabel;
class QVBoxLayout;

namespace morvane {

class DownloadRow;

/// The files that are being written, each with how far it is and a button that ends it. Scrolls from the
/// fourth on, and is not shown when there are none. Above them, why the user is asked again for a place.
class DownloadsBar : public QScrollArea {
    Q_OBJECT
public:
    /// `downloads` outlives the bar.
    explicit DownloadsBar(const Downloads &downloads, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

private:
    void update();

    const Downloads &m_downloads;
    QVBoxLayout *m_column;
    QLabel *m_problem;
    QList<DownloadRow *> m_rows;
};

} // namespace morvane
