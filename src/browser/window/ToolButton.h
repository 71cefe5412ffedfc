#pragma once

#include "ui/theme/Icons.h"

#include <QString>

class QToolButton;

namespace morvane {

/// A button of the browser's bars that shows a symbol only: its name is told to assistive technology and to
/// the pointer that rests on it. Grows with the font.
QToolButton *toolButton(Symbol symbol, const QString &name, const QString &hint = {});

} // namespace morvane
