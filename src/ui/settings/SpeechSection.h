#pragma once

#include "ui/settings/SettingsSection.h"

namespace morvane {

class SettingsStore;

/// What is spoken.
class SpeechSection : public SettingsSection {
    Q_OBJECT
public:
    /// `settings` must outlive the section.
    explicit SpeechSection(SettingsStore &settings, QWidget *parent = nullptr);
};

} // namespace morvane
