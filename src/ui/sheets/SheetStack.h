#pragma once

class QWidget;

namespace morvane {

/// Makes the topmost open sheet of `window` the only part of it that takes input, or gives everything back
/// when none is open. Other parts are disabled, so that neither mouse nor Tab nor assistive technology nor
/// the program's own moves of the focus reach them. The menu bar stays enabled, since its commands (quit, new
/// conversation) belong to the program.
void updateSheetStack(QWidget *window);

} // namespace morvane
