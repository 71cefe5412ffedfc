#include "ui/settings/PrivacySection.h"

#include "store/SettingsStore.h"

using namespace Qt::StringLiterals;

namespace morvane {

PrivacySection::PrivacySection(SettingsStore &settings, QWidget *parent)
    : SettingsSection(u"Privacy"_s, parent)
{
    NoteLabel *note = addNote({});
    const auto refresh = [note, &settings] {
        const ProviderID provider = settings.providerID();
        note->setText(
            u"Your messages and the tools you use are sent to %1 so it can generate a response. "
            "Your API key is stored on this Mac and is sent only to your provider. With the local "
            "model, nothing leaves your computer at all. Conversations are saved on your Mac in "
            "Application Support and can be deleted anytime from the sidebar."_s.arg(
                provider == ProviderID::custom ? u"your custom provider"_s : displayName(provider)));
    };
    connect(&settings, &SettingsStore::changed, this, refresh);
    refresh();
}

} // namespace morvane
