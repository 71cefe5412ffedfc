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

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

QList<PickerChoice> presetChoices()
{
    QList<PickerChoice> choices{{u"None — enter a URL myself"_s, {}, {}}};
    for (const CustomPreset &preset : customPresets())
        choices.append({preset.name + u" — "_s + preset.note, preset.name, {}});
    return choices;
}

} // namespace

CustomServerBlock::CustomServerBlock(SettingsStore &settings, SettingsModel &model, QWidget *parent)
    : QWidget(parent), m_settings(settings), m_model(model), m_preset(new MenuPicker(u"Server preset"_s)),
      m_baseURL(new QLineEdit), m_warning(new NoteLabel(u"That does not look like a valid http(s) URL yet."_s,
                                                        NoteLabel::Tone::warning))
{
    m_preset->setChoices(presetChoices());
    m_baseURL->setPlaceholderText(QString::fromUtf16(exampleBaseURL));
    m_baseURL->setAccessibleName(u"API base URL"_s);
    m_warning->setSymbol(Symbol::triangleExclamation);
    auto *presetLabel = new QLabel(u"Preset"_s);
    presetLabel->setBuddy(m_preset);
    auto *urlLabel = new QLabel(u"API base URL"_s);
    urlLabel->setBuddy(m_baseURL);

    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 8, 0, 0);
    rows->addWidget(new HeadingLabel(u"Server"_s, HeadingLabel::Level::group));
    rows->addWidget(presetLabel);
    rows->addWidget(m_preset);
    rows->addWidget(new NoteLabel(u"Fills in the base URL of a known OpenAI-compatible service."_s));
    rows->addSpacing(4);
    rows->addWidget(urlLabel);
    rows->addWidget(m_baseURL);
    rows->addWidget(new NoteLabel(
        u"The root of your provider's OpenAI-compatible API. /chat/completions is added automatically."_s));
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
