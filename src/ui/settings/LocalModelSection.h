#pragma once

#include "ui/settings/SettingsSection.h"

namespace morvane {

class DownloadProgressBar;
class LocalModelFlow;
class SettingsStore;
struct SettingsServices;
class WrappingButton;

/// The state of the local model, the way to set it up, and the models that fit this machine. Shown for
/// `ollama` only.
class LocalModelSection : public SettingsSection {
    Q_OBJECT
public:
    /// Both must outlive the section.
    LocalModelSection(const SettingsServices &services, LocalModelFlow &flow, QWidget *parent = nullptr);

private:
    QWidget *makeReadyBlock();
    void refresh();

    SettingsStore &m_settings;
    LocalModelFlow &m_flow;
    QWidget *m_ready;
    NoteLabel *m_installing;
    DownloadProgressBar *m_progress;
    WrappingButton *m_install;
    NoteLabel *m_error;
};

} // namespace morvane
