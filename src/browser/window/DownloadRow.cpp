#include "browser/window/DownloadRow.h"

#include "browser/pages/PageText.h"
#include "browser/window/ToolButton.h"
#include "ui/controls/LineLabel.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QToolButton>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int wholeProgress = 100;
/// Characters of a file name, which stands in one line beside the progress.
constexpr qsizetype longestName = 60;

} // namespace

DownloadRow::DownloadRow(const std::shared_ptr<PageDownload> &download, QWidget *parent)
    : QWidget(parent), m_download(download), m_label(new LineLabel(Qt::PlainText)),
      m_progress(new QProgressBar)
{
    const QString name = pageText(download->suggestedFileName(), longestName);
    const QString site = pageText(download->site(), longestName);
    m_progress->setTextVisible(false);
    m_progress->setFixedWidth(fontMetrics().averageCharWidth() * 16);
    m_progress->setAccessibleName(u"Downloading "_s + name);
    m_label->setText(site.isEmpty() ? name : name + u" from "_s + site);
    auto *cancel = toolButton(Symbol::cross, u"Cancel the download of "_s + name);
    connect(cancel, &QToolButton::clicked, download.get(), &PageDownload::cancel);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->addWidget(m_label, 1);
    row->addWidget(m_progress);
    row->addWidget(cancel);
    showProgress();
}

void DownloadRow::showProgress()
{
    const qint64 total = m_download->totalBytes();
    if (total <= 0)
        return m_progress->setRange(0, 0);
    const qint64 part = std::clamp<qint64>(m_download->receivedBytes(), 0, total);
    m_progress->setRange(0, wholeProgress);
    m_progress->setValue(
        static_cast<int>(static_cast<double>(part) / static_cast<double>(total) * wholeProgress));
}

} // namespace morvane
