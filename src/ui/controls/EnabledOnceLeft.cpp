#include "ui/controls/EnabledOnceLeft.h"

#include <QFocusEvent>
#include <QVariant>
#include <QWidget>

namespace morvane {

namespace {

constexpr auto wantedProperty = "morvaneEnabledOnceLeft";

class LeavingFilter : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::FocusOut)
            return false;
        // From a menu, or another window, the keyboard comes back.
        const Qt::FocusReason reason = static_cast<QFocusEvent *>(event)->reason();
        if (reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason)
            static_cast<QWidget *>(watched)->setEnabled(watched->property(wantedProperty).toBool());
        return false;
    }
};

} // namespace

void setEnabledOnceLeft(QWidget *widget, bool enabled)
{
    if (!widget->property(wantedProperty).isValid())
        widget->installEventFilter(new LeavingFilter(widget));
    widget->setProperty(wantedProperty, enabled);
    widget->setEnabled(enabled || widget->hasFocus());
}

} // namespace morvane
