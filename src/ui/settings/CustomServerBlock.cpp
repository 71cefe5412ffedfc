#include "ui/settings/CustomServerBlock.h"

#include "app/SettingsModel.h"
#include "base/Text.h"
#include "providers/Endpoints.h"
#include "store/SettingsStore.h"
#include "ui/controls/HeadingLabel.h"
#include "ui/controls/MenuPicker.h"
#include "ui/controls/NoteLabel.h"

#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace morvane {

namespace {

QList<PickerChoice> presetChoices()
{
    QList<PickerChoice> choices{{QStringLiteral("None — enter a URL myself"), {}, {}}};
    for (const CustomPreset &preset : customPresets())
        choices.append({preset.name + QStringLiteral(" — ") + preset.note, preset.name, {}});
    return choices;
}

} // namespace

CustomServerBlock::CustomServerBlock(SettingsStore &settings, SettingsModel &model, QWidget *parent)
    : QWidget(parent), m_settings(settings), m_model(model),
      m_preset(new MenuPicker(QStringLiteral("Server preset"))), m_baseURL(new QLineEdit),
      m_warning(new NoteLabel(QStringLiteral("That does not look like a valid http(s) URL yet."),
                              NoteLabel::Tone::warning))
{
    m_preset->setChoices(presetChoices());
    m_baseURL->setPlaceholderText(QString::fromUtf16(exampleBaseURL));
    m_baseURL->setAccessibleName(QStringLiteral("API base URL"));
    m_warning->setSymbol(Symbol::triangleExclamation);
    auto *presetLabel = new QLabel(QStringLiteral("Preset"));
    presetLabel->setBuddy(m_preset);
    auto *urlLabel = new QLabel(QStringLiteral("API base URL"));
    urlLabel->setBuddy(m_baseURL);

    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 8, 0, 0);
    rows->addWidget(new HeadingLabel(QStringLiteral("Server"), HeadingLabel::Level::group));
    rows->addWidget(presetLabel);
    rows->addWidget(m_preset);
    rows->addWidget(
        new NoteLabel(QStringLiteral("Fills in the base URL of a known OpenAI-compatible service.")));
    rows->addSpacing(4);
    rows->addWidget(urlLabel);
    rows->addWidget(m_baseURL);
    rows->addWidget(new NoteLabel(QStringLiteral(
        "The root of your provider's OpenAI-compatible API. /chat/completions is added automatically.")));
    rows->addWidget(m_warning);

    connect(m_preset, &MenuPicker::chosen, &model, &SettingsModel::selectPreset);
    connect(m_baseURL, &QLineEdit::textEdited, &settings, &SettingsStore::setCustomBaseURL);
    connect(&model, &SettingsModel::changed, this, &CustomServerBlock::refresh);
    refresh();
}

void CustomServerBlock::refresh()
{
    m_preset->select(m_model.selectedPreset());
    // The field may hold blanks around what is stored; writing that back would move the cursor.
    if (trimmed(m_baseURL->text()) != m_settings.customBaseURL())
        m_baseURL->setText(m_settings.customBaseURL());
    m_warning->setVisible(m_model.hasBaseURLWarning());
}

} // namespace morvane
