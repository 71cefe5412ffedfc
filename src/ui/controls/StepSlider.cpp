#include "ui/controls/StepSlider.h"

#include "ui/controls/WheelFocus.h"

#include <QAccessibleWidget>
#include <QSignalBlocker>
#include <algorithm>
#include <cmath>

namespace morvane {

namespace {

class StepSliderAccessible : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit StepSliderAccessible(StepSlider *slider) : QAccessibleWidget(slider, QAccessible::Slider) {}

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::ValueInterface)
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind != QAccessible::Value)
            return QAccessibleWidget::text(kind);
        return slider().accessibleName() + u' ' + QString::number(slider().stepValue(), 'f', 1);
    }
    QVariant currentValue() const override { return slider().stepValue(); }
    void setCurrentValue(const QVariant &value) override
    {
        slider().setValue(slider().stepsOf(value.toDouble()));
    }
    QVariant maximumValue() const override { return slider().valueOf(slider().maximum()); }
    QVariant minimumValue() const override { return slider().valueOf(slider().minimum()); }
    QVariant minimumStepSize() const override { return slider().step(); }

private:
    StepSlider &slider() const { return *static_cast<StepSlider *>(widget()); }
};

QAccessibleInterface *createInterface(const QString &, QObject *object)
{
    auto *slider = qobject_cast<StepSlider *>(object);
    return slider ? new StepSliderAccessible(slider) : nullptr;
}

} // namespace

StepSlider::StepSlider(double lowest, double step, int count, QWidget *parent)
    : QSlider(Qt::Horizontal, parent), m_lowest(lowest), m_step(step)
{
    QAccessible::installFactory(&createInterface);
    setRange(0, count);
    setPageStep(std::max(1, count / 5));
    takeWheelOnlyWithFocus(this);
    connect(this, &QSlider::valueChanged, this, [this] { Q_EMIT stepValueChanged(stepValue()); });
}

double StepSlider::valueOf(int steps) const
{
    // 3 * 0.1 is not 0.3, but 3 / 10 is.
    return m_lowest + double(steps) / std::round(1 / m_step);
}

int StepSlider::stepsOf(double value) const
{
    const double steps = std::round((value - m_lowest) / m_step);
    return static_cast<int>(std::clamp(steps, double(minimum()), double(maximum())));
}

void StepSlider::showStepValue(double value)
{
    const QSignalBlocker blocker(this);
    setValue(stepsOf(value));
}

} // namespace morvane
