#include "ui/settings/BehaviourSection.h"

#include "store/SettingsStore.h"
#include "ui/controls/StepSlider.h"
#include "ui/controls/WheelFocus.h"
#include "ui/controls/WrappingCheckBox.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSpinBox>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr double temperatureStep = 0.1;
constexpr int temperatureSteps = 10;
constexpr int fewestSteps = 8;
constexpr int mostSteps = 200;

} // namespace

BehaviourSection::BehaviourSection(SettingsStore &settings, QWidget *parent)
    : SettingsSection(u"Behaviour"_s, parent), m_settings(settings),
      m_temperatureLabel(addNote({}, NoteLabel::Tone::plain)),
      m_temperature(new StepSlider(0, temperatureStep, temperatureSteps)),
      m_unlimited(new WrappingCheckBox(u"Keep going until the task is done"_s)),
      m_tools(new WrappingCheckBox(u"Allow the assistant to use tools (commands, files, web, subagents)"_s))
{
    m_temperature->setAccessibleName(u"Creativity temperature"_s);
    m_tools->setAccessibleName(u"Allow tools"_s);

    column()->addWidget(m_temperature);
    addGap();
    column()->addWidget(m_unlimited);
    addNote(u"When on, the assistant works until the task finishes instead of stopping at the step "
            "limit. It still stops if it repeats the same action without progress."_s);
    m_stepsBlock = makeStepsBlock();
    column()->addWidget(m_stepsBlock);
    addGap();
    column()->addWidget(m_tools);
    addNote(
        u"Lets the assistant run commands, work with files, search the web, and delegate to subagents."_s);

    connect(m_temperature, &StepSlider::stepValueChanged, &settings, &SettingsStore::setTemperature);
    connect(m_unlimited, &QCheckBox::toggled, &settings, &SettingsStore::setUnlimitedSteps);
    connect(m_tools, &QCheckBox::toggled, &settings, &SettingsStore::setUseTools);
    connect(&settings, &SettingsStore::changed, this, &BehaviourSection::refresh);
    refresh();
}

QWidget *BehaviourSection::makeStepsBlock()
{
    auto *block = new QWidget;
    auto *rows = new QVBoxLayout(block);
    rows->setContentsMargins(0, 8, 0, 0);
    auto *row = new QHBoxLayout;
    auto *label = new NoteLabel(u"Maximum steps per task"_s, NoteLabel::Tone::plain);
    m_steps = new QSpinBox;
    m_steps->setRange(fewestSteps, mostSteps);
    m_steps->setSuffix(u" steps"_s);
    m_steps->setAccessibleName(u"Maximum steps per task"_s);
    label->setBuddy(m_steps);
    takeWheelOnlyWithFocus(m_steps);
    row->addWidget(label, 1);
    row->addWidget(m_steps);
    rows->addLayout(row);
    rows->addWidget(
        new NoteLabel(u"How many tool actions one task may take before the assistant stops and reports."_s));
    rows->addWidget(new NoteLabel(
        u"Higher lets the assistant work through longer jobs. If it ever repeats the same action "
        "without progress, it stops on its own."_s));
    connect(m_steps, &QSpinBox::valueChanged, &m_settings, &SettingsStore::setMaxSteps);
    return block;
}

void BehaviourSection::refresh()
{
    const QString value = QString::number(m_settings.temperature(), 'f', 1);
    m_temperatureLabel->setText(u"Creativity (temperature): "_s + value);
    m_temperature->showStepValue(m_settings.temperature());
    const QSignalBlocker stepsBlocker(m_steps);
    const QSignalBlocker unlimitedBlocker(m_unlimited);
    const QSignalBlocker toolsBlocker(m_tools);
    // A field in which a number is being typed is ahead of the setting.
    if (m_steps->value() != m_settings.maxSteps())
        m_steps->setValue(m_settings.maxSteps());
    m_unlimited->setChecked(m_settings.unlimitedSteps());
    m_stepsBlock->setVisible(!m_settings.unlimitedSteps());
    m_tools->setChecked(m_settings.useTools());
}

} // namespace morvane
