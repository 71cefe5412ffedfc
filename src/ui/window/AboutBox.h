#pragma once

#include <QString>

class QWidget;

namespace morvane {

/// Tells over `window` which version of the program this is.
void showAboutBox(QWidget &window, const QString &title);

} // namespace morvane
