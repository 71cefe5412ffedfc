#pragma once

#include "ui/settings/SettingsSection.h"

namespace morvane {

class SettingsStore;

/// What leaves the computer, and to whom.
class PrivacySection : public SettingsSection {
    Q_OBJECT
public:
    /// `settings` must outlive the section.
    explicit PrivacySection(SettingsStore &settings, QWidget *parent = nullptr);
};

} // namespace morvane
