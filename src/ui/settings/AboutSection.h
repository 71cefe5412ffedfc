#pragma once

#include "ui/settings/SettingsSection.h"

namespace morvane {

/// Which version this is.
class AboutSection : public SettingsSection {
    Q_OBJECT
public:
    explicit AboutSection(QWidget *parent = nullptr);
};

} // namespace morvane
