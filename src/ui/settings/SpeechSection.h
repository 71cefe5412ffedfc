#pragma once

#include "ui/settings/SettingsSection.h"

namespace morvane {

class AppModel;

/// What is spoken.
class SpeechSection : public SettingsSection {
    Q_OBJECT
public:
    explicit SpeechSection(AppModel &model, QWidget *parent = nullptr);
};

} // namespace morvane
