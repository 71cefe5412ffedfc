#include "ui/settings/RecommendedModelRow.h"

#include "app/LocalModelFlow.h"
#include "localmodel/ModelName.h"
#include "store/SettingsStore.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/BadgeLabel.h"
#include "ui/controls/DownloadProgressBar.h"
#include "ui/controls/FlowLayout.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/NoteLabel.h"
#include "ui/settings/ControlStates.h"
#include "ui/theme/Icons.h"

#include <QHBoxLayout>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

RecommendedModelRow::RecommendedModelRow(const LocalModelRecommendation &recommendation,
                                         SettingsStore &settings, LocalModelFlow &flow, QWidget *parent)
    : ButtonsBeside(parent), m_name(recommendation.name), m_settings(settings), m_flow(flow),
      m_active(new NoteLabel(u"Active"_s, NoteLabel::Tone::plain)), m_pulling(new NoteLabel({})),
      m_progress(new DownloadProgressBar), m_download(new QPushButton(u"Download"_s)),
      m_delete(new QPushButton(symbolIcon(Symbol::trash), u"Delete"_s))
{
    setAccessibleRole(this, QAccessible::Grouping);
    setAccessibleName(recommendation.name);
    m_active->setSymbol(Symbol::checkCircle);
    m_active->setWordWrap(false);
    m_active->setAccessibleName(recommendation.name + u" is active"_s);

    constexpr int spacing = 8;
    auto *top = new FlowLayout(spacing); // in a narrow window one below the other
    auto *name = new HeadingLabel(recommendation.name, HeadingLabel::Level::group);
    name->setWordWrap(false);
    top->addWidget(name);
    top->addWidget(new BadgeLabel(recommendation.badge));
    top->addWidget(m_active);
    auto *rows = new QVBoxLayout;
    rows->setContentsMargins(0, 4, 0, 4);
    rows->setSpacing(2);
    rows->addLayout(top);
    rows->addWidget(new NoteLabel(recommendation.note, NoteLabel::Tone::plain));
    rows->addWidget(new NoteLabel(u"~%1 GB download · needs %2 GB RAM"_s.arg(
        QString::number(recommendation.downloadGB, 'f', 1), QString::number(recommendation.ramRequiredGB))));
    rows->addWidget(m_pulling);
    rows->addWidget(m_progress);
    m_download->setAccessibleName(u"Download "_s + m_name);
    m_delete->setAccessibleName(u"Delete the %1 model from this Mac"_s.arg(m_name));
    m_progress->setFocusPolicy(Qt::TabFocus);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_download);
    buttons->addWidget(m_delete);
    setParts(rows, buttons);

    connect(m_download, &QPushButton::clicked, this, [this] { m_flow.pullLocalModelIfNeeded(m_name); });
    connect(m_delete, &QPushButton::clicked, this, &RecommendedModelRow::askToDelete);
    connect(&flow, &LocalModelFlow::changed, this, &RecommendedModelRow::refresh);
    connect(&settings, &SettingsStore::changed, this, &RecommendedModelRow::refresh);
    refresh();
}

void RecommendedModelRow::refresh()
{
    const LocalModelInfo &info = m_flow.info();
    const bool pulling = m_flow.pullingModel() == m_name;
    const bool installed = containsModel(m_flow.installedModels(), m_name);
    const bool active = info.running && installed && containsModel({m_settings.model().trimmed()}, m_name);
    m_active->setVisible(!pulling && active);
    if (pulling) {
        m_pulling->setText(u"Downloading %1\n%2"_s.arg(m_name, info.progress).trimmed());
        m_progress->showFraction(info.progressFraction);
    }
    m_pulling->setVisible(pulling);
    applyStates(*this, {{m_progress, pulling, true},
                        {m_download, !pulling && !installed, !m_flow.isWorking()},
                        {m_delete, !pulling && installed, m_flow.pullingModel().isEmpty()}});
}

void RecommendedModelRow::askToDelete()
{
    auto *question = new QMessageBox(QMessageBox::Question, u"Delete the %1 model?"_s.arg(m_name),
                                     u"Delete the %1 model?"_s.arg(m_name), QMessageBox::Cancel, this);
    question->setTextFormat(Qt::PlainText);
    question->setInformativeText(
        u"This frees disk space but you will need to download the model again before using it."_s);
    QPushButton *confirm = question->addButton(u"Delete"_s, QMessageBox::DestructiveRole);
    question->setDefaultButton(QMessageBox::Cancel);
    question->setEscapeButton(QMessageBox::Cancel);
    question->setAttribute(Qt::WA_DeleteOnClose);
    connect(confirm, &QPushButton::clicked, this, [this] { m_flow.deleteLocalModel(m_name); });
    question->open();
}

} // namespace morvane
