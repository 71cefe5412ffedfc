#pragma once

#include <QList>

class QWidget;

namespace morvane {

/// What becomes of one control of a group of which some take the places of others.
struct ControlState {
    QWidget *control = nullptr;
    bool isShown = false;
    bool isEnabled = true;
};

/// Shows, hides and enables the controls, all of them in `group`. Where the one with the focus goes, the
/// first that stays and can be used takes it and is scrolled to: the toolkit would give it to whatever comes
/// next in the window.
void applyStates(const QWidget &group, const QList<ControlState> &states);

} // namespace morvane
