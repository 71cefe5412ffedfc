#include "ui/settings/KeySection.h"

#include "app/AppModel.h"
#include "providers/Endpoints.h"
#include "store/SettingsStore.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QUrl>

namespace morvane {

KeySection::KeySection(AppModel &model, QWidget *parent)
    : SettingsSection(QStringLiteral("API Key"), parent), m_model(model), m_key(new QLineEdit),
      m_show(new QPushButton), m_signup(new QPushButton)
{
    auto *row = new QHBoxLayout;
    row->addWidget(m_key, 1);
    row->addWidget(m_show);
    column()->addLayout(row);
    column()->addWidget(m_signup, 0, Qt::AlignLeft);
    m_note = addNote({});
    m_signup->setAccessibleName(QStringLiteral("Free API key"));
    connect(m_key, &QLineEdit::textEdited, this,
            [this](const QString &text) { m_model.settings().setApiKey(text); });
    connect(m_show, &QPushButton::clicked, this, [this] {
        setKeyVisibility(m_visibility == Visibility::hidden ? Visibility::shown : Visibility::hidden);
    });
    connect(m_signup, &QPushButton::clicked, this, [this] {
        QDesktopServices::openUrl(QUrl(Endpoints().signupURL(m_model.settings().providerID())));
    });
    connect(&model.settings(), &SettingsStore::changed, this, &KeySection::refresh);
    setKeyVisibility(Visibility::hidden);
    refresh();
}

void KeySection::setKeyVisibility(Visibility visibility)
{
    m_visibility = visibility;
    const bool shown = visibility == Visibility::shown;
    m_key->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password);
    m_show->setText(shown ? QStringLiteral("Hide") : QStringLiteral("Show"));
    m_show->setAccessibleName(shown ? QStringLiteral("Hide API key") : QStringLiteral("Show API key"));
}

void KeySection::refresh()
{
    const SettingsStore &settings = m_model.settings();
    const ProviderID provider = settings.providerID();
    const bool custom = provider == ProviderID::custom;
    const QString name = displayName(provider);
    setVisible(provider != ProviderID::ollama);
    setSectionHeading(custom ? QStringLiteral("API Key (optional)") : QStringLiteral("API Key"));
    m_key->setAccessibleName(name + QStringLiteral(" API key"));
    if (m_key->text().trimmed() != settings.apiKey())
        m_key->setText(settings.apiKey());
    m_signup->setVisible(!custom);
    m_signup->setText(QStringLiteral("Get a free API key for ") + name);
    m_note->setText(
        QStringLiteral(
            "Your key is stored on this Mac and is sent only to %1. It is kept out of the Keychain "
            "so macOS does not ask for a password on every launch.")
            .arg(custom ? QStringLiteral("the server you configured") : name));
}

} // namespace morvane
