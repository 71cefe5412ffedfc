#include "ui/settings/ControlStates.h"

#include <QCoreApplication>
#include <QEvent>
#include <QScrollArea>
#include <QWidget>
#include <algorithm>

namespace morvane {

namespace {

/// Scrolls to `control` if it still has the focus, with everything around it laid out.
void bringIntoSight(QWidget *control)
{
    if (control->window()->focusWidget() != control)
        return;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    for (QWidget *around = control->parentWidget(); around; around = around->parentWidget())
        if (auto *scroll = qobject_cast<QScrollArea *>(around))
            scroll->ensureWidgetVisible(control);
}

} // namespace

void applyStates(const QWidget &group, const QList<ControlState> &states)
{
    const auto isUsable = [](const ControlState &state) { return state.isShown && state.isEnabled; };
    for (const ControlState &state : states) {
        if (!isUsable(state))
            continue;
        state.control->setEnabled(true);
        state.control->show();
    }
    const QWidget *const focused = group.window()->focusWidget();
    const auto isFocused = [focused](const ControlState &state) { return state.control == focused; };
    const auto leaving = std::find_if(states.cbegin(), states.cend(), isFocused);
    const auto next = std::find_if(states.cbegin(), states.cend(), isUsable);
    // Before the other goes, or readers would hear of a third.
    if (leaving != states.cend() && !isUsable(*leaving) && next != states.cend()) {
        QWidget *const control = next->control;
        control->setFocus(Qt::OtherFocusReason);
        // When the others have taken their states, too.
        QMetaObject::invokeMethod(control, [control] { bringIntoSight(control); }, Qt::QueuedConnection);
    }
    for (const ControlState &state : states) {
        state.control->setVisible(state.isShown);
        state.control->setEnabled(state.isEnabled);
    }
}

} // namespace morvane
