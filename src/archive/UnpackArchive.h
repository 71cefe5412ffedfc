#pragma once

#include "archive/UnpackError.h"
#include "archive/UnpackOrder.h"

#include <expected>

namespace morvane {

/// Unpacks a tar archive that is compressed with gzip or Zstandard. Only folders, regular files and links
/// come out of it; whatever else it holds, and every name or link that leads out of the folder, fails the
/// whole, as do links to absolute places and files that are there twice. Of the permissions only whether a
/// file is a program counts. When it fails, what has been unpacked is left to be removed. Takes up to 140 MB
/// of memory, the window of Zstandard. Any thread but the main one; blocks for as long as the disk and the
/// processor need.
std::expected<void, UnpackError> unpackArchive(const UnpackOrder &order);

} // namespace morvane
