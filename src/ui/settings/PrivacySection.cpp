#include "ui/settings/PrivacySection.h"

#include "store/SettingsStore.h"

namespace morvane {

PrivacySection::PrivacySection(SettingsStore &settings, QWidget *parent)
    : SettingsSection(QStringLiteral("Privacy"), parent)
{
    NoteLabel *note = addNote({});
    const auto refresh = [note, &settings] {
        const ProviderID provider = settings.providerID();
        note->setText(
            QStringLiteral(
                "Your messages and the tools you use are sent to %1 so it can generate a response. "
                "Your API key is stored on this Mac and is sent only to your provider. With the local "
                "model, nothing leaves your computer at all. Conversations are saved on your Mac in "
                "Application Support and can be deleted anytime from the sidebar.")
                .arg(provider == ProviderID::custom ? QStringLiteral("your custom provider")
                                                    : displayName(provider)));
    };
    connect(&settings, &SettingsStore::changed, this, refresh);
    refresh();
}

} // namespace morvane
