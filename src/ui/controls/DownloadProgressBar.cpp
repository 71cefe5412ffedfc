#include "ui/controls/DownloadProgressBar.h"

#include "ui/theme/MorvaneStyle.h"

#include <QAccessibleWidget>
#include <QPainter>
#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

class DownloadProgressBarAccessible : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit DownloadProgressBarAccessible(DownloadProgressBar *bar)
        : QAccessibleWidget(bar, QAccessible::ProgressBar)
    {
    }

    void *interface_cast(QAccessible::InterfaceType type) override
    {
        // A bar that does not know how far the download is has no value.
        if (type == QAccessible::ValueInterface && bar().percent())
            return static_cast<QAccessibleValueInterface *>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind != QAccessible::Value)
            return QAccessibleWidget::text(kind);
        const auto percent = bar().percent();
        return percent ? u"%1 percent"_s.arg(*percent) : QString();
    }
    QVariant currentValue() const override { return bar().percent().value_or(0); }
    void setCurrentValue(const QVariant &) override {}
    QVariant maximumValue() const override { return bar().maximum(); }
    QVariant minimumValue() const override { return bar().minimum(); }
    QVariant minimumStepSize() const override { return 1; }

private:
    DownloadProgressBar &bar() const { return *static_cast<DownloadProgressBar *>(widget()); }
};

QAccessibleInterface *createInterface(const QString &, QObject *object)
{
    auto *bar = qobject_cast<DownloadProgressBar *>(object);
    return bar ? new DownloadProgressBarAccessible(bar) : nullptr;
}

} // namespace

DownloadProgressBar::DownloadProgressBar(QWidget *parent)
    : DownloadProgressBar(
          [](std::optional<int> percent) {
              return u"Download progress"_s + (percent ? u" %1%"_s.arg(*percent) : QString());
          },
          parent)
{
}

DownloadProgressBar::DownloadProgressBar(Naming naming, QWidget *parent)
    : QProgressBar(parent), m_naming(std::move(naming))
{
    QAccessible::installFactory(&createInterface);
    setTextVisible(false);
    showFraction(std::nullopt);
}

void DownloadProgressBar::showFraction(std::optional<double> fraction)
{
    const int maximum = fraction ? 100 : 0;
    const int value = fraction ? static_cast<int>(std::floor(std::clamp(*fraction, 0.0, 1.0) * 100)) : 0;
    if (this->maximum() != maximum || (fraction && this->value() != value)) {
        // The toolkit paints a new value at once, and with it all that waits to be painted in the window;
        // left without updates meanwhile, the bar is painted with the next frame.
        setUpdatesEnabled(false);
        setRange(0, maximum);
        if (fraction)
            setValue(value);
        setUpdatesEnabled(true);
    }
    const QString name = m_naming(percent());
    // The toolkit tells a reader of the name each time that it is set.
    if (accessibleName() != name)
        setAccessibleName(name);
}

void DownloadProgressBar::paintEvent(QPaintEvent *event)
{
    QProgressBar::paintEvent(event);
    if (!hasFocus())
        return;
    constexpr qreal focusRadius = 4;
    QPainter painter(this);
    MorvaneStyle::drawFocusRing(painter, rect(), focusRadius, palette());
}

std::optional<int> DownloadProgressBar::percent() const
{
    return maximum() > 0 ? std::optional(value()) : std::nullopt;
}

} // namespace morvane
