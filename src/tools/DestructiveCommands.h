#pragma once

#include <QString>

namespace morvane {

/// Whether a shell command may delete data or is hard to undo: whether one of a fixed list of patterns is
/// found anywhere in the command in lower case. A guide for asking the user, not a wall: commands can be
/// written so that no pattern finds them. Gives up after 20 ms, which no command of an executable length
/// takes by itself, and then answers true. Any thread.
bool isDestructiveCommand(const QString &command);

} // namespace morvane
