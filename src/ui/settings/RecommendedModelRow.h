#pragma once

#include "localmodel/LocalModelRecommendation.h"

#include <QWidget>

class QProgressBar;

namespace morvane {

class LocalModelFlow;
class NoteLabel;
class SettingsStore;

/// One model that fits this machine, and whether it is being downloaded or in use.
class RecommendedModelRow : public QWidget {
    Q_OBJECT
public:
    /// `settings` and `flow` must outlive the row.
    RecommendedModelRow(const LocalModelRecommendation &recommendation, SettingsStore &settings,
                        LocalModelFlow &flow, QWidget *parent = nullptr);

private:
    void refresh();

    QString m_name;
    SettingsStore &m_settings;
    LocalModelFlow &m_flow;
    NoteLabel *m_active;
    NoteLabel *m_pulling;
    QProgressBar *m_progress;
};

} // namespace morvane
