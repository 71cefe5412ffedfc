#pragma once

#include <QList>
#include <QString>
#include <QStringView>

namespace morvane {

/// Whether a shell command may delete data or is hard to undo: whether one of destructivePatterns() is found
/// anywhere in the command in lower case, with the meaning that it has in ICU. A guide for asking the user,
/// not a wall: commands can be written so that no pattern finds them. The work grows with the length of the
/// command and with nothing else, so that the answer is always the same. Any thread.
bool isDestructiveCommand(const QString &command);

/// The patterns in ICU's syntax. Any thread.
QList<QStringView> destructivePatterns();

} // namespace morvane
