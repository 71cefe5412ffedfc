#include "ui/settings/ProviderSection.h"

#include "app/AppModel.h"
#include "providers/ChatCompletionsURL.h"
#include "providers/Endpoints.h"
#include "providers/ProviderCatalog.h"
#include "store/SettingsStore.h"
#include "ui/controls/SegmentedPicker.h"
#include "ui/controls/WheelFocus.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <algorithm>

namespace morvane {

namespace {

QStringList shortLabels()
{
    return {QStringLiteral("Gemini"), QStringLiteral("OpenRouter"), QStringLiteral("Groq"),
            QStringLiteral("Ollama"), QStringLiteral("OpenAI"),     QStringLiteral("Zen"),
            QStringLiteral("Custom")};
}

QComboBox *menuPicker(const QString &accessibleName)
{
    auto *picker = new QComboBox;
    picker->setAccessibleName(accessibleName);
    picker->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    picker->setMinimumContentsLength(20);
    takeWheelOnlyWithFocus(picker);
    return picker;
}

/// Shows `text` without moving the cursor of a field that already holds it.
void showText(QLineEdit *field, const QString &text)
{
    if (field->text().trimmed() != text)
        field->setText(text);
}

} // namespace

ProviderSection::ProviderSection(AppModel &model, QWidget *parent)
    : SettingsSection(QStringLiteral("AI Provider"), parent), m_model(model),
      m_provider(new SegmentedPicker(QStringLiteral("Provider"), shortLabels()))
{
    column()->addWidget(m_provider);
    m_note = addNote({});
    addNote(QStringLiteral("Each provider keeps its own API key and model."));
    m_server = makeServerBlock();
    column()->addWidget(m_server);
    column()->addWidget(makeModelBlock());
    connect(m_provider, &SegmentedPicker::chosen, this, &ProviderSection::chooseProvider);
    connect(&model.settings(), &SettingsStore::changed, this, &ProviderSection::refresh);
    refresh();
}

QWidget *ProviderSection::makeServerBlock()
{
    auto *block = new QWidget;
    auto *rows = new QVBoxLayout(block);
    rows->setContentsMargins(0, 4, 0, 4);
    rows->addWidget(new HeadingLabel(QStringLiteral("Server"), HeadingLabel::Level::section));
    m_preset = menuPicker(QStringLiteral("Server preset"));
    m_preset->addItem(QStringLiteral("None — enter a URL myself"));
    for (const CustomPreset &preset : customPresets())
        m_preset->addItem(preset.name + QStringLiteral(" — ") + preset.note, preset.baseURL);
    rows->addWidget(m_preset);
    rows->addWidget(
        new NoteLabel(QStringLiteral("Fills in the base URL of a known OpenAI-compatible service.")));
    auto *label = new QLabel(QStringLiteral("API base URL"));
    m_baseURL = new QLineEdit;
    m_baseURL->setPlaceholderText(QString::fromUtf16(exampleBaseURL));
    m_baseURL->setAccessibleName(QStringLiteral("API base URL"));
    label->setBuddy(m_baseURL);
    rows->addWidget(label);
    rows->addWidget(m_baseURL);
    rows->addWidget(new NoteLabel(QStringLiteral(
        "The root of your provider's OpenAI-compatible API. /chat/completions is added automatically.")));
    m_warning = new NoteLabel(QStringLiteral("That does not look like a valid http(s) URL yet."),
                              NoteLabel::Tone::warning);
    rows->addWidget(m_warning);
    connect(m_preset, &QComboBox::activated, this, [this](int index) {
        if (index > 0)
            m_model.settings().setCustomBaseURL(m_preset->itemData(index).toString());
    });
    connect(m_baseURL, &QLineEdit::textEdited, this,
            [this](const QString &text) { m_model.settings().setCustomBaseURL(text); });
    return block;
}

QWidget *ProviderSection::makeModelBlock()
{
    auto *block = new QWidget;
    auto *rows = new QVBoxLayout(block);
    rows->setContentsMargins(0, 4, 0, 0);
    auto *label = new QLabel(QStringLiteral("Model"));
    m_models = menuPicker({});
    label->setBuddy(m_models);
    m_modelName = new QLineEdit;
    m_reset = new QPushButton(QStringLiteral("Reset"));
    m_reset->setAccessibleName(QStringLiteral("Reset model to default"));
    auto *nameRow = new QHBoxLayout;
    nameRow->addWidget(m_modelName, 1);
    nameRow->addWidget(m_reset);
    rows->addWidget(label);
    rows->addWidget(m_models);
    rows->addLayout(nameRow);
    connect(m_models, &QComboBox::activated, this, &ProviderSection::chooseModel);
    connect(m_modelName, &QLineEdit::textEdited, this,
            [this](const QString &text) { m_model.settings().setModel(text); });
    connect(m_reset, &QPushButton::clicked, this, &ProviderSection::resetModel);
    return block;
}

void ProviderSection::chooseProvider(int index)
{
    const ProviderID provider = allProviders.at(static_cast<std::size_t>(index));
    SettingsStore &settings = m_model.settings();
    if (settings.providerID() == provider)
        return;
    settings.setProviderID(provider);
    settings.setModel(defaultModel(provider));
    if (provider == ProviderID::ollama)
        m_model.localModel().refreshLocalModel();
}

void ProviderSection::chooseModel(int index)
{
    const bool custom = index == m_models->count() - 1;
    if (!custom)
        m_model.settings().setModel(m_models->itemText(index));
    m_modelName->setVisible(custom);
    m_reset->setVisible(custom);
    if (custom)
        m_modelName->setFocus();
}

void ProviderSection::resetModel()
{
    m_model.settings().setModel(defaultModel(m_model.settings().providerID()));
    m_models->setFocus();
}

void ProviderSection::refresh()
{
    const SettingsStore &settings = m_model.settings();
    const ProviderID provider = settings.providerID();
    const auto place = std::find(allProviders.begin(), allProviders.end(), provider);
    m_provider->setCurrentIndex(static_cast<int>(place - allProviders.begin()));
    m_note->setText(providerNote(provider));
    m_note->setAccessibleName(QStringLiteral("Provider info. ") + providerNote(provider));
    m_server->setVisible(provider == ProviderID::custom);
    showText(m_baseURL, settings.customBaseURL());
    m_warning->setVisible(!settings.customBaseURL().isEmpty() &&
                          !chatCompletionsURL(settings.customBaseURL()));
    refreshModels();
}

void ProviderSection::refreshModels()
{
    const SettingsStore &settings = m_model.settings();
    const ProviderID provider = settings.providerID();
    const QList<ProviderModel> models = curatedModels(provider);
    const bool typing = m_modelName->hasFocus();
    const QSignalBlocker blocker(m_models);
    m_models->clear();
    for (const ProviderModel &model : models)
        m_models->addItem(model.name);
    m_models->addItem(QStringLiteral("Custom"));
    const int listed = typing ? -1 : m_models->findText(settings.model(), Qt::MatchExactly);
    const bool custom = listed < 0 || listed == m_models->count() - 1;
    m_models->setCurrentIndex(custom ? m_models->count() - 1 : listed);
    m_models->setVisible(!models.isEmpty());
    m_models->setAccessibleName(QStringLiteral("Model for ") + displayName(provider));
    const bool ownServer = models.isEmpty();
    const QString name =
        ownServer ? QStringLiteral("Model name on your server") : QStringLiteral("Custom model name");
    m_modelName->setAccessibleName(name);
    m_modelName->setPlaceholderText(ownServer ? name : QStringLiteral("Or type a custom model name"));
    m_modelName->setVisible(custom);
    m_reset->setVisible(custom && !ownServer);
    showText(m_modelName, settings.model());
}

} // namespace morvane
