#pragma once

#include <QAccessible>

class QWidget;

namespace morvane {

/// Lets assistive technology see `widget` as `role`. For containers and labels that have no widget class of
/// their own: the widget then offers its accessible name and description and its children, no actions. Call
/// it in the widget's constructor, before anyone can have asked for its interface.
void setAccessibleRole(QWidget *widget, QAccessible::Role role);

/// The same for a container that keeps the user from everything else in its window while it is shown.
void setAccessibleModalDialog(QWidget *widget);

} // namespace morvane
