#pragma once

#include "archive/EntryPath.h"
#include "base/FileDescriptor.h"

#include <expected>
#include <string>
#include <vector>

namespace morvane {

/// Makes files, folders and links below one folder and never anywhere else: no step on the way follows a
/// link. Functions answer false or nothing on failure, with errno set. One thread at a time; blocks.
class FolderWriter {
public:
    enum class FileKind { plain, program };

    /// See isOpen().
    explicit FolderWriter(const std::string &folder);

    bool isOpen() const { return m_root.isOpen(); }

    /// Makes a folder and those above it; one that is there is fine.
    bool makeFolder(const EntryPath &path);
    /// Makes an empty file, with the folders above it, and opens it for writing. Fails if anything is there.
    FileDescriptor makeFile(const EntryPath &path, FileKind kind);
    /// A second name of a regular file that was made before.
    bool makeHardLink(const EntryPath &path, const EntryPath &existing);
    /// A symbolic link. Where it really leads is told by linksLeadInside, when all is there.
    bool makeSymbolicLink(const EntryPath &path, const std::string &target);

    /// Whether every symbolic link leads to a place below the folder, by all the links on its way.
    bool linksLeadInside() const;

private:
    FileDescriptor openFolder(const EntryPath &path, bool create);
    FileDescriptor openParent(const EntryPath &path, bool create);

    std::string m_folder;
    FileDescriptor m_root;
    std::vector<std::string> m_links; ///< Paths below the folder.
};

} // namespace morvane
