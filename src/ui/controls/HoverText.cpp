#include "ui/controls/HoverText.h"

#include <QHelpEvent>
#include <QToolTip>
#include <QVariant>

namespace morvane {

namespace {

constexpr auto textProperty = "morvaneHoverText";

class HoverFilter : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::ToolTip)
            return false;
        auto *widget = static_cast<QWidget *>(watched);
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), hoverText(widget), widget);
        return true;
    }
};

} // namespace

void setHoverText(QWidget *widget, const QString &text)
{
    if (!widget->property(textProperty).isValid())
        widget->installEventFilter(new HoverFilter(widget));
    widget->setProperty(textProperty, text);
}

QString hoverText(const QWidget *widget)
{
    return widget->property(textProperty).toString();
}

} // namespace morvane
