#include "ui/settings/ControlStates.h"

#include <QWidget>
#include <algorithm>

namespace morvane {

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
    if (leaving != states.cend() && !isUsable(*leaving) && next != states.cend())
        next->control->setFocus(Qt::OtherFocusReason);
    for (const ControlState &state : states) {
        state.control->setVisible(state.isShown);
        state.control->setEnabled(state.isEnabled);
    }
}

} // namespace morvane
