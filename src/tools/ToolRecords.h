#pragma once

#include "tools/ToolRecord.h"

#include <QList>

namespace morvane {

// The parts of the table of tools, in the order in which they stand in it.

/// Date, arithmetic, files, shell, web, list of tasks, subagents.
QList<ToolRecord> workRecords();
/// Pages and programs for the user, the look at the screen.
QList<ToolRecord> openingRecords();
/// The pages of Morvane's own browser.
QList<ToolRecord> browserRecords();
/// The question to the user.
QList<ToolRecord> questionRecords();
/// Mouse, keyboard, clipboard, other programs.
QList<ToolRecord> inputRecords();
QList<ToolRecord> reminderRecords();

} // namespace morvane
