#include "ui/settings/LocalModelSection.h"

#include "app/LocalModelFlow.h"
#include "app/SettingsModel.h"
#include "store/SettingsStore.h"
#include "ui/controls/DownloadProgressBar.h"
#include "ui/controls/OutsideText.h"
#include "ui/controls/WrappingButton.h"
#include "ui/settings/ControlStates.h"
#include "ui/settings/RecommendedModelRow.h"

using namespace Qt::StringLiterals;

namespace morvane {

LocalModelSection::LocalModelSection(const SettingsServices &services, LocalModelFlow &flow, QWidget *parent)
    : SettingsSection(u"Built-in Local Model"_s, parent), m_settings(services.settings), m_flow(flow),
      m_progress(new DownloadProgressBar),
      m_install(new WrappingButton(u"Install the built-in local model"_s))
{
    const QString summary = services.machineSummary();
    NoteLabel *machine = addNote(summary);
    machine->setSymbol(Symbol::laptop);
    machine->setAccessibleName(u"Your Mac. "_s + summary);
    m_ready = makeReadyBlock();
    column()->addWidget(m_ready);
    m_installing = addNote({}, NoteLabel::Tone::plain);
    column()->addWidget(m_progress);
    column()->addWidget(m_install, 0, Qt::AlignLeft);
    m_progress->setFocusPolicy(Qt::TabFocus);
    m_error = addNote({}, NoteLabel::Tone::error);
    addGap();
    column()->addWidget(new HeadingLabel(u"Recommended models for your Mac"_s, HeadingLabel::Level::group));
    addNote(u"Pick the model you want to use. It downloads once and then runs fully on your Mac "
            "with no limits."_s);
    for (const LocalModelRecommendation &recommendation : recommendations(services.machineMemory()))
        column()->addWidget(new RecommendedModelRow(recommendation, m_settings, flow));

    connect(m_install, &QPushButton::clicked, &flow, &LocalModelFlow::installLocalModelIfNeeded);
    connect(&flow, &LocalModelFlow::changed, this, &LocalModelSection::refresh);
    connect(&m_settings, &SettingsStore::changed, this, &LocalModelSection::refresh);
    refresh();
}

QWidget *LocalModelSection::makeReadyBlock()
{
    auto *block = new QWidget;
    auto *rows = new QVBoxLayout(block);
    rows->setContentsMargins(0, 0, 0, 0);
    auto *ready = new NoteLabel(u"The local model is ready. No limits, nothing leaves this Mac."_s,
                                NoteLabel::Tone::plain);
    ready->setSymbol(Symbol::arrowRightCircle);
    auto *release = new WrappingButton(u"Free its memory"_s);
    release->setAccessibleName(u"Free the memory of the local model"_s);
    rows->addWidget(ready);
    rows->addWidget(
        new NoteLabel(u"It stays in memory when Morvane ends, so that the next answer comes at once. Memory "
                      "that you free here is taken again by the next message."_s));
    rows->addWidget(release, 0, Qt::AlignLeft);
    connect(release, &QPushButton::clicked, &m_flow, &LocalModelFlow::freeMemory);
    return block;
}

void LocalModelSection::refresh()
{
    const LocalModelInfo &info = m_flow.info();
    setVisible(m_settings.providerID() == ProviderID::ollama);
    const bool installing = info.installing && !info.running;
    m_ready->setVisible(info.running);
    m_installing->setText(outsideText(info.progress));
    m_installing->setAccessibleName(u"Installing the local model. "_s + info.progress);
    m_installing->setVisible(installing);
    m_progress->showFraction(info.progressFraction);
    applyStates(*this, {{m_progress, installing, true},
                        {m_install, !info.running && !installing, !m_flow.isWorking()}});
    showOutsideText(*m_error, u"Local model error: "_s + info.error);
    m_error->setVisible(!info.error.isEmpty());
}

} // namespace morvane
