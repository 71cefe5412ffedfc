#include "ui/controls/WheelFocus.h"

#include <QEvent>
#include <QWidget>

namespace morvane {

namespace {

class WheelFilter : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Wheel || static_cast<QWidget *>(watched)->hasFocus())
            return false;
        event->ignore();
        return true;
    }
};

} // namespace

void takeWheelOnlyWithFocus(QWidget *control)
{
    control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(new WheelFilter(control));
}

} // namespace morvane
