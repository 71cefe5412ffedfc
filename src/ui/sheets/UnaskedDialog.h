#pragma once

#include "ui/sheets/AnswerGuard.h"

class QDialog;

namespace morvane {

/// Opens a dialog for which the user has not asked, over the window that it belongs to and holds. The
/// keyboard stays in another window that has it, where the user may be writing, until the user turns to this
/// one. Whether it did: the user is to be told then.
bool openUnasked(QDialog &dialog);

/// Keeps `dialog` from being answered by keys and presses that were meant for what it came up over.
void guardAnswers(QDialog &dialog, SteadyNow now);

} // namespace morvane
