#pragma once

#include "base/FileDescriptor.h"

#include <QByteArrayView>
#include <string>
#include <string_view>

namespace morvane {

/// A new file in a folder that is to take another one's place. It goes away with the object unless it was
/// renamed, and is locked for as long as the object lives, which tells it from what crashed writers left.
/// Every function answers false on failure, with errno set. Any thread; blocks.
class TemporaryFile {
public:
    /// What the names of all of them begin with.
    static constexpr std::string_view namePrefix = ".morvane-write-";

    /// Creates it, for the user alone (0600). See isOpen().
    explicit TemporaryFile(const std::string &folder);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    bool isOpen() const { return m_file.isOpen(); }
    bool setPermissions(unsigned permissions);
    bool write(QByteArrayView bytes);

    /// Brings the content to the disk.
    bool sync();

    /// Makes sure that no write failed late, as on network file systems, and renames it.
    bool renameTo(const std::string &path);

private:
    std::string m_path;
    FileDescriptor m_file;
    bool m_isRenamed = false;
};

/// Brings a file or a folder to the disk; false with errno set on failure. Some file systems know no such
/// thing; then there is none to wait for.
bool syncDescriptor(int descriptor);

} // namespace morvane
