#include "ui/settings/RecommendedModelRow.h"

#include "app/LocalModelFlow.h"
#include "store/SettingsStore.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/BadgeLabel.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/NoteLabel.h"
#include "ui/settings/DownloadProgress.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

RecommendedModelRow::RecommendedModelRow(const LocalModelRecommendation &recommendation,
                                         SettingsStore &settings, LocalModelFlow &flow, QWidget *parent)
    : QWidget(parent), m_name(recommendation.name), m_settings(settings), m_flow(flow),
      m_active(new NoteLabel(u"Active"_s, NoteLabel::Tone::plain)), m_pulling(new NoteLabel({})),
      m_progress(new QProgressBar)
{
    setAccessibleRole(this, QAccessible::Grouping);
    setAccessibleName(recommendation.name);
    m_active->setSymbol(Symbol::checkCircle);
    m_active->setWordWrap(false);
    m_active->setAccessibleName(recommendation.name + u" is active"_s);
    m_progress->setTextVisible(false);

    auto *top = new QHBoxLayout;
    top->setSpacing(8);
    auto *name = new HeadingLabel(recommendation.name, HeadingLabel::Level::group);
    name->setWordWrap(false);
    top->addWidget(name);
    top->addWidget(new BadgeLabel(recommendation.badge));
    top->addStretch();
    top->addWidget(m_active);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 4, 0, 4);
    rows->setSpacing(2);
    rows->addLayout(top);
    rows->addWidget(new NoteLabel(recommendation.note, NoteLabel::Tone::plain));
    rows->addWidget(new NoteLabel(u"~%1 GB download · needs %2 GB RAM"_s.arg(
        QString::number(recommendation.downloadGB, 'f', 1), QString::number(recommendation.ramRequiredGB))));
    rows->addWidget(m_pulling);
    rows->addWidget(m_progress);

    connect(&flow, &LocalModelFlow::changed, this, &RecommendedModelRow::refresh);
    connect(&settings, &SettingsStore::changed, this, &RecommendedModelRow::refresh);
    refresh();
}

void RecommendedModelRow::refresh()
{
    const LocalModelInfo &info = m_flow.info();
    const bool pulling = m_flow.pullingModel() == m_name;
    m_active->setVisible(!pulling && info.running && m_settings.model() == m_name);
    m_pulling->setText(u"Downloading %1\n%2"_s.arg(m_name, info.progress).trimmed());
    m_pulling->setVisible(pulling);
    m_progress->setVisible(pulling);
    showDownloadProgress(*m_progress, info.progressFraction);
}

} // namespace morvane
