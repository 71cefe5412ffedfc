#pragma once

#include "localmodel/LocalModelRecommendation.h"

#include "ui/settings/ButtonsBeside.h"

class QPushButton;

namespace morvane {

class DownloadProgressBar;
class LocalModelFlow;
class NoteLabel;
class SettingsStore;

/// One model that fits this machine: whether it is being downloaded or in use, and the ways to download and
/// delete it.
class RecommendedModelRow : public ButtonsBeside {
    Q_OBJECT
public:
    /// `settings` and `flow` must outlive the row.
    RecommendedModelRow(const LocalModelRecommendation &recommendation, SettingsStore &settings,
                        LocalModelFlow &flow, QWidget *parent = nullptr);

private:
    void refresh();
    void askToDelete();

    QString m_name;
    SettingsStore &m_settings;
    LocalModelFlow &m_flow;
    NoteLabel *m_active;
    NoteLabel *m_pulling;
    DownloadProgressBar *m_progress;
    QPushButton *m_download;
    QPushButton *m_delete;
};

} // namespace morvane
