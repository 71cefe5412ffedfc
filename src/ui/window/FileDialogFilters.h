#pragma once

#include <QStringList>

namespace morvane {

/// The choices of the file dialog: what can be attached, each kind by itself, and everything, since a file
/// of an unknown type is tried as text.
QStringList fileDialogFilters();

} // namespace morvane
