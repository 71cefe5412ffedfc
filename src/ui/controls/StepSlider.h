#pragma once

#include <QSlider>

namespace morvane {

/// A slider over a value with decimals, in steps. Assistive technology hears the value itself, not the number
/// of steps. The wheel moves it only while it has the focus.
class StepSlider : public QSlider {
    Q_OBJECT
public:
    /// From `lowest` to `lowest + count * step`.
    StepSlider(double lowest, double step, int count, QWidget *parent = nullptr);

    double stepValue() const { return valueOf(value()); }
    /// The nearest step; without `stepValueChanged`.
    void showStepValue(double value);

    double valueOf(int steps) const;
    int stepsOf(double value) const;
    double step() const { return m_step; }

Q_SIGNALS:
    /// The user moved it.
    void stepValueChanged(double value);

private:
    double m_lowest;
    double m_step;
};

} // namespace morvane
