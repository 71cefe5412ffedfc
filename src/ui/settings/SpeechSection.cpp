#include "ui/settings/SpeechSection.h"

#include "store/SettingsStore.h"
#include "ui/controls/WrappingCheckBox.h"

#include <QSignalBlocker>

namespace morvane {

SpeechSection::SpeechSection(SettingsStore &settings, QWidget *parent)
    : SettingsSection(QStringLiteral("Accessibility"), parent)
{
    auto *speak = new WrappingCheckBox(QStringLiteral("Speak responses aloud when they finish"));
    speak->setAccessibleName(QStringLiteral("Speak responses"));
    column()->addWidget(speak);
    addNote(QStringLiteral(
        "Morvane is designed to be fully usable with VoiceOver and Full Keyboard Access. Every "
        "action and approval is announced."));
    const auto refresh = [speak, &settings] {
        const QSignalBlocker blocker(speak);
        speak->setChecked(settings.announceResponses());
    };
    connect(speak, &QCheckBox::toggled, &settings, &SettingsStore::setAnnounceResponses);
    connect(&settings, &SettingsStore::changed, this, refresh);
    refresh();
}

} // namespace morvane
