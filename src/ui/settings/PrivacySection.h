#pragma once

#include "ui/settings/SettingsSection.h"

namespace morvane {

class AppModel;

/// What leaves the computer, and to whom.
class PrivacySection : public SettingsSection {
    Q_OBJECT
public:
    explicit PrivacySection(AppModel &model, QWidget *parent = nullptr);
};

} // namespace morvane
