#pragma once

#include "ui/settings/SettingsSection.h"

class QCheckBox;
class QLabel;
class QSlider;
class QSpinBox;

namespace morvane {

class AppModel;

/// How the assistant works: creativity, limits, tools.
class BehaviourSection : public SettingsSection {
    Q_OBJECT
public:
    explicit BehaviourSection(AppModel &model, QWidget *parent = nullptr);

private:
    QWidget *makeStepsBlock();
    void refresh();

    AppModel &m_model;
    QLabel *m_temperatureLabel;
    QSlider *m_temperature;
    QCheckBox *m_unlimited;
    QWidget *m_stepsBlock;
    QSpinBox *m_steps;
    QCheckBox *m_tools;
};

} // namespace morvane
