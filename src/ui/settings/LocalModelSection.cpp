#include "ui/settings/LocalModelSection.h"

#include "app/AppModel.h"
#include "store/SettingsStore.h"

#include <QProgressBar>
#include <QPushButton>

namespace morvane {

LocalModelSection::LocalModelSection(AppModel &model, QWidget *parent)
    : SettingsSection(QStringLiteral("Built-in Local Model"), parent), m_model(model),
      m_progress(new QProgressBar),
      m_install(new QPushButton(QStringLiteral("Install the built-in local model")))
{
    NoteLabel *machine = addNote(model.machineSummary());
    machine->setAccessibleName(QStringLiteral("Your Mac. ") + model.machineSummary());
    m_state = addNote({}, NoteLabel::Tone::plain);
    m_progress->setTextVisible(false);
    column()->addWidget(m_progress);
    column()->addWidget(m_install, 0, Qt::AlignLeft);
    m_error = addNote({}, NoteLabel::Tone::error);
    connect(m_install, &QPushButton::clicked, &model.localModel(),
            &LocalModelFlow::installLocalModelIfNeeded);
    connect(&model.localModel(), &LocalModelFlow::changed, this, &LocalModelSection::refresh);
    connect(&model.settings(), &SettingsStore::changed, this, &LocalModelSection::refresh);
    refresh();
}

void LocalModelSection::refresh()
{
    const LocalModelInfo &info = m_model.localModel().info();
    setVisible(m_model.settings().providerID() == ProviderID::ollama);
    m_state->setText(info.running
                         ? QStringLiteral("The local model is ready. No limits, nothing leaves this Mac.")
                         : info.progress);
    m_state->setAccessibleName(
        info.installing ? QStringLiteral("Installing the local model. ") + info.progress : m_state->text());
    m_state->setVisible(!m_state->text().isEmpty());
    m_progress->setVisible(info.installing);
    m_progress->setRange(0, info.progressFraction ? 100 : 0);
    m_progress->setValue(static_cast<int>(info.progressFraction.value_or(0) * 100));
    m_progress->setAccessibleName(QStringLiteral("Download progress %1").arg(m_progress->value()) +
                                  QLatin1Char('%'));
    m_install->setVisible(!info.running && !info.installing);
    m_error->setText(QStringLiteral("Local model error: ") + info.error);
    m_error->setVisible(!info.error.isEmpty());
}

} // namespace morvane
