#pragma once

#include "ui/settings/SettingsSection.h"

class QProgressBar;
class QPushButton;

namespace morvane {

class AppModel;

/// The state of the local model and the way to set it up. Shown for `ollama` only.
class LocalModelSection : public SettingsSection {
    Q_OBJECT
public:
    explicit LocalModelSection(AppModel &model, QWidget *parent = nullptr);

private:
    void refresh();

    AppModel &m_model;
    NoteLabel *m_state;
    QProgressBar *m_progress;
    QPushButton *m_install;
    NoteLabel *m_error;
};

} // namespace morvane
