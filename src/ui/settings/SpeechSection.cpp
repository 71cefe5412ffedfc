#include "ui/settings/SpeechSection.h"

#include "store/SettingsStore.h"
#include "ui/controls/WrappingCheckBox.h"

#include <QSignalBlocker>

using namespace Qt::StringLiterals;

namespace morvane {

SpeechSection::SpeechSection(SettingsStore &settings, QWidget *parent)
    : SettingsSection(u"Accessibility"_s, parent)
{
    auto *speak = new WrappingCheckBox(u"Speak responses aloud when they finish"_s);
    speak->setAccessibleName(u"Speak responses"_s);
    column()->addWidget(speak);
    addNote(u"Morvane is designed to be fully usable with VoiceOver and Full Keyboard Access. Every "
            "action and approval is announced."_s);
    const auto refresh = [speak, &settings] {
        const QSignalBlocker blocker(speak);
        speak->setChecked(settings.announceResponses());
    };
    connect(speak, &QCheckBox::toggled, &settings, &SettingsStore::setAnnounceResponses);
    connect(&settings, &SettingsStore::changed, this, refresh);
    refresh();
}

} // namespace morvane
