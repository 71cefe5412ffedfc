#include "ui/settings/ProviderSection.h"

#include "app/SettingsModel.h"
#include "store/SettingsStore.h"
#include "ui/controls/SegmentedPicker.h"
#include "ui/settings/CustomServerBlock.h"
#include "ui/settings/ModelBlock.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QStringList shortLabels()
{
    return {u"Gemini"_s, u"OpenRouter"_s, u"Groq"_s, u"Ollama"_s, u"OpenAI"_s, u"Zen"_s, u"Custom"_s};
}

} // namespace

ProviderSection::ProviderSection(SettingsStore &settings, SettingsModel &model, QWidget *parent)
    : SettingsSection(u"AI Provider"_s, parent), m_settings(settings),
      m_provider(new SegmentedPicker(u"Provider"_s, shortLabels())),
      m_server(new CustomServerBlock(settings, model))
{
    column()->addWidget(m_provider);
    m_note = addNote({});
    addNote(u"Each provider keeps its own API key and model."_s);
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
    m_note->setAccessibleName(u"Provider info. "_s + providerNote(provider));
    m_server->setVisible(provider == ProviderID::custom);
}

} // namespace morvane
