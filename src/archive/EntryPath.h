#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// A place below the folder of an unpacked archive, as the names on the way to it.
using EntryPath = std::vector<std::string>;

/// The longest path of an archive, in bytes.
inline constexpr std::size_t longestEntryPath = 2048;

/// The names of an entry's path without "." and doubled slashes; nothing for one that is absolute, too long,
/// or goes up anywhere. Empty for the folder itself.
std::optional<EntryPath> entryPath(std::string_view path);

/// Whether the target of a symbolic link stays below the folder, by its letters; `link` is the link's own
/// place.
bool staysInside(const EntryPath &link, std::string_view target);

} // namespace morvane
