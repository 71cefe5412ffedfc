#include "browser/window/DownloadsBar.h"

#include "browser/window/DownloadRow.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/FocusInSight.h"
#include "ui/controls/LineLabel.h"

#include <QVBoxLayout>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qsizetype mostInSight = 3;

} // namespace

DownloadsBar::DownloadsBar(const Downloads &downloads, QWidget *parent)
    : QScrollArea(parent), m_downloads(downloads), m_problem(new LineLabel(Qt::PlainText))
{
    auto *content = new QWidget;
    m_column = new QVBoxLayout(content);
    m_column->setContentsMargins(12, 4, 12, 4);
    m_problem->setObjectName(u"problem"_s);
    m_column->addWidget(m_problem);
    setAccessibleRole(content, QAccessible::Grouping);
    content->setAccessibleName(u"Downloads"_s);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setWidgetResizable(true);
    setWidget(content);
    viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);
    keepFocusInSight(*this);
    connect(&downloads, &Downloads::changed, this, &DownloadsBar::update);
    update();
}

QSize DownloadsBar::sizeHint() const
{
    const QMargins margins = m_column->contentsMargins();
    const auto rows = static_cast<int>(std::min(m_rows.size(), mostInSight));
    const int row = m_rows.isEmpty() ? 0 : m_rows.first()->sizeHint().height();
    const int problem = m_problem->isHidden() ? 0 : m_problem->sizeHint().height() + m_column->spacing();
    return {widget()->sizeHint().width(), margins.top() + problem + rows * row +
                                              std::max(0, rows - 1) * m_column->spacing() + margins.bottom()};
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
    const bool wasShown = !m_problem->isHidden() && m_problem->text() == m_downloads.problem();
    m_problem->setText(m_downloads.problem());
    m_problem->setVisible(!m_downloads.problem().isEmpty());
    if (!m_problem->isHidden() && !wasShown)
        ensureWidgetVisible(m_problem); // once: with each progress it would take the user's scrolling back
    setVisible(!running.isEmpty() || !m_problem->isHidden());
    updateGeometry();
}

} // namespace morvane
