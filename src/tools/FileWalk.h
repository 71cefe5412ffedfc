#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace morvane {

/// Walks a folder and everything below it that is not hidden, depth first, a folder before its entries, in
/// the file system's order. Links are entries, never followed, so that no loop is walked. Folders that cannot
/// be read are passed over. Names are bytes: a file system promises no encoding. Blocks; one thread at a
/// time.
class FileWalk {
public:
    enum class Kind { regularFile, folder, other };

    struct Entry {
        std::string_view path;         ///< The root and the relative path; a NUL stands behind it.
        std::string_view relativePath; ///< As seen from the root.
        Kind kind = Kind::other;
    };

    /// `root` may be a link to a folder.
    explicit FileWalk(std::string root);

    /// Goes to the next entry; false at the end.
    bool next();

    /// Where the walk stands. The texts hold until next() is called again.
    Entry entry() const;

private:
    /// The entries of one folder that are still to come.
    struct Level {
        std::vector<char> names; ///< For each entry its type as dirent tells it, its name and a NUL.
        std::size_t position = 0;
        std::size_t pathLength = 0; ///< Of the folder's own path, with its "/".
    };

    enum class Links { follow, refuse };

    void enter(Links links);

    std::string m_path; ///< Of the entry where the walk stands.
    std::size_t m_rootLength;
    Kind m_kind = Kind::folder;
    std::vector<Level> m_levels;
};

} // namespace morvane
