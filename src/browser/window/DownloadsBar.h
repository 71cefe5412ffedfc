#pragma once

#include "browser/tabs/Downloads.h"

#include <QList>
#include <QWidget>

class QVBoxLayout;

namespace morvane {

class DownloadRow;

/// The files that are being written, each with how far it is and a button that ends it. Not shown when there
/// are none.
class DownloadsBar : public QWidget {
    Q_OBJECT
public:
    /// `downloads` outlives the bar.
    explicit DownloadsBar(const Downloads &downloads, QWidget *parent = nullptr);

private:
    void update();

    const Downloads &m_downloads;
    QVBoxLayout *m_column;
    QList<DownloadRow *> m_rows;
};

} // namespace morvane
