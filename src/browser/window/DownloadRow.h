#pragma once

#include "browser/pages/PageDownload.h"

#include <QWidget>
#include <memory>

class QLabel;
class QProgressBar;

namespace morvane {

/// A file that is being written: its name, its site, how far it is, and a button that ends it.
class DownloadRow : public QWidget {
    Q_OBJECT
public:
    explicit DownloadRow(const std::shared_ptr<PageDownload> &download, QWidget *parent = nullptr);

    bool isOf(const PageDownload &download) const { return m_download.get() == &download; }
    void showProgress();

private:
    const std::shared_ptr<PageDownload> m_download;
    QLabel *m_label;
    QProgressBar *m_progress;
};

} // namespace morvane
