#include "ui/settings/ProviderSection.h"

#include "app/SettingsModel.h"
#include "store/SettingsStore.h"
#include "ui/controls/SegmentedPicker.h"
#include "ui/settings/CustomServerBlock.h"
#include "ui/settings/ModelBlock.h"

#include <algorithm>

namespace morvane {

namespace {

QStringList shortLabels()
{
    return {QStringLiteral("Gemini"), QStringLiteral("OpenRouter"), QStringLiteral("Groq"),
            QStringLiteral("Ollama"), QStringLiteral("OpenAI"),     QStringLiteral("Zen"),
            QStringLiteral("Custom")};
}

} // namespace

ProviderSection::ProviderSection(SettingsStore &settings, SettingsModel &model, QWidget *parent)
    : SettingsSection(QStringLiteral("AI Provider"), parent), m_settings(settings),
      m_provider(new SegmentedPicker(QStringLiteral("Provider"), shortLabels())),
      m_server(new CustomServerBlock(settings, model))
{
    column()->addWidget(m_provider);
    m_note = addNote({});
    addNote(QStringLiteral("Each provider keeps its own API key and model."));
    column()->addWidget(m_server);
    addGap();
    column()->addWidget(new ModelBlock(settings, model));
    connect(m_provider, &SegmentedPicker::chosen, &model,
            [&model](int index) { model.chooseProvider(allProviders.at(static_cast<std::size_t>(index))); });
    connect(&settings, &SettingsStore::changed, this, &ProviderSection::refresh);
    refresh();
}

void ProviderSection::refresh()
{
    const ProviderID provider = m_settings.providerID();
    const auto *const place = std::find(allProviders.begin(), allProviders.end(), provider);
    m_provider->setCurrentIndex(static_cast<int>(place - allProviders.begin()));
    m_note->setText(providerNote(provider));
    m_note->setAccessibleName(QStringLiteral("Provider info. ") + providerNote(provider));
    m_server->setVisible(provider == ProviderID::custom);
}

} // namespace morvane
