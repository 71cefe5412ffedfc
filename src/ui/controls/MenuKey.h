#pragma once

#include <QKeyEvent>

namespace morvane {

/// Whether a key asks for the menu of what has the keyboard. The toolkit knows only the first, which many
/// keyboards lack.
inline bool isMenuKey(const QKeyEvent &key)
{
    return key.key() == Qt::Key_Menu || (key.key() == Qt::Key_F10 && key.modifiers() == Qt::ShiftModifier);
}

} // namespace morvane
