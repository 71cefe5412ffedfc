#include "ui/settings/KeySection.h"

#include "app/SettingsModel.h"
#include "base/Text.h"
#include "store/SettingsStore.h"
#include "ui/controls/WrappingButton.h"

#include <QHBoxLayout>
#include <QHideEvent>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace morvane {

KeySection::KeySection(SettingsStore &settings, SettingsModel &model, QWidget *parent)
    : SettingsSection(u"API Key"_s, parent), m_settings(settings), m_key(new QLineEdit),
      m_show(new QPushButton), m_signup(new WrappingButton({}))
{
    auto *row = new QHBoxLayout;
    row->addWidget(m_key, 1);
    row->addWidget(m_show);
    column()->addLayout(row);
    column()->addWidget(m_signup, 0, Qt::AlignLeft);
    m_note = addNote({});
    connect(m_key, &QLineEdit::textEdited, &settings, &SettingsStore::setApiKey);
    connect(m_show, &QPushButton::clicked, this, [this] {
        setKeyVisibility(m_visibility == Visibility::hidden ? Visibility::shown : Visibility::hidden);
    });
    connect(m_signup, &QPushButton::clicked, &model, &SettingsModel::openSignupPage);
    connect(&settings, &SettingsStore::changed, this, &KeySection::refresh);
    connect(&settings, &SettingsStore::providerIDChanged, this,
            [this] { setKeyVisibility(Visibility::hidden); });
    setKeyVisibility(Visibility::hidden);
    refresh();
}

void KeySection::hideEvent(QHideEvent *event)
{
    SettingsSection::hideEvent(event);
    // A window that is only minimised stays as it is.
    if (!event->spontaneous())
        setKeyVisibility(Visibility::hidden);
}

void KeySection::setKeyVisibility(Visibility visibility)
{
    m_visibility = visibility;
    const bool shown = visibility == Visibility::shown;
    m_key->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password);
    m_show->setText(shown ? u"Hide"_s : u"Show"_s);
    m_show->setAccessibleName(shown ? u"Hide API key"_s : u"Show API key"_s);
}

void KeySection::refresh()
{
    const ProviderID provider = m_settings.providerID();
    const bool custom = provider == ProviderID::custom;
    const QString name = displayName(provider);
    setVisible(provider != ProviderID::ollama);
    setSectionHeading(custom ? u"API Key (optional)"_s : u"API Key"_s);
    m_key->setAccessibleName(name + u" API key"_s);
    if (trimmed(m_key->text()) != m_settings.apiKey())
        m_key->setText(m_settings.apiKey());
    m_signup->setVisible(!custom);
    m_signup->setLabel(u"Get a free API key for "_s + name);
    m_signup->setAccessibleName(u"Free API key"_s);
    m_note->setText(u"Your key is stored on this Mac and is sent only to %1. It is kept out of the Keychain "
                    "so macOS does not ask for a password on every launch."_s.arg(
                        custom ? u"the server you configured"_s : name));
}

} // namespace morvane
