#pragma once

#include <QString>

namespace morvane {

// Where Morvane keeps what belongs to the user. Both follow the XDG base directory rules: the environment
// variable if it holds an absolute path, the default below the home folder otherwise. Nothing is created.

/// `$XDG_DATA_HOME/Morvane` (default `~/.local/share/Morvane`): conversations, tool servers, history,
/// bookmarks.
QString dataFolder();

/// `$XDG_CONFIG_HOME/Morvane/Morvane.conf` (default `~/.config/…`): the user defaults.
QString settingsFile();

} // namespace morvane
