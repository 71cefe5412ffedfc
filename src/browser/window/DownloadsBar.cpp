#include "browser/window/DownloadsBar.h"

#include "browser/window/DownloadRow.h"
#include "ui/controls/AccessibleRole.h"

#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

DownloadsBar::DownloadsBar(const Downloads &downloads, QWidget *parent)
    : QWidget(parent), m_downloads(downloads), m_column(new QVBoxLayout(this))
{
    setAccessibleRole(this, QAccessible::Grouping);
    setAccessibleName(u"Downloads"_s);
    m_column->setContentsMargins(12, 4, 12, 4);
    connect(&downloads, &Downloads::changed, this, &DownloadsBar::update);
    update();
}

void DownloadsBar::update()
{
    const QList<Downloads::Download> &running = m_downloads.running();
    const auto isOver = [&running](DownloadRow *row) {
        const bool runs = std::any_of(running.cbegin(), running.cend(),
                                      [row](const auto &download) { return row->isOf(*download); });
        if (!runs)
            row->deleteLater(); // its button may be what has ended it
        return !runs;
    };
    m_rows.removeIf(isOver);
    for (DownloadRow *row : m_rows)
        row->showProgress();
    for (qsizetype index = m_rows.size(); index < running.size(); ++index) {
        m_rows.append(new DownloadRow(running.at(index)));
        m_column->addWidget(m_rows.last());
    }
    setVisible(!running.isEmpty());
}

} // namespace morvane
