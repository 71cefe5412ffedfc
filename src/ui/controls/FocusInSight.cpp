#include "ui/controls/FocusInSight.h"

#include <QApplication>
#include <QScrollArea>

namespace morvane {

void keepFocusInSight(QScrollArea &area)
{
    QObject::connect(qApp, &QApplication::focusChanged, &area, [&area](QWidget *, QWidget *now) {
        if (now && area.widget() && area.widget()->isAncestorOf(now))
            area.ensureWidgetVisible(now, 0, 0);
    });
}

} // namespace morvane
