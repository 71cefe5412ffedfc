#pragma once

#include "ui/settings/SettingsSection.h"

class QCheckBox;
class QSpinBox;

namespace morvane {

class SettingsStore;
class StepSlider;

/// How the assistant works: creativity, limits, tools.
class BehaviourSection : public SettingsSection {
    Q_OBJECT
public:
    /// `settings` must outlive the section.
    explicit BehaviourSection(SettingsStore &settings, QWidget *parent = nullptr);

private:
    QWidget *makeStepsBlock();
    void refresh();

    SettingsStore &m_settings;
    NoteLabel *m_temperatureLabel;
    StepSlider *m_temperature;
    QCheckBox *m_unlimited;
    QWidget *m_stepsBlock;
    QSpinBox *m_steps;
    QCheckBox *m_tools;
};

} // namespace morvane
