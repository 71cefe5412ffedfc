#pragma once

#include "base/FileDescriptor.h"

#include <QByteArray>
#include <string>
#include <vector>

namespace morvane {

/// Files of the system that the libraries of this program read by their paths, opened before the process
/// gives all paths up. Never files of the user. Filled by one thread, then read by any.
class DataFiles {
public:
    /// Opens the file at `path` if there is one.
    void add(const QByteArray &path);
    /// The same for a file that the libraries look for under the path `name`.
    void addAs(const QByteArray &name, const QByteArray &path);
    /// Opens the files in a folder and below it.
    void addFolder(const QByteArray &path);
    /// To be called before the first `open`.
    void sort();

    /// A new descriptor that stands at the file's beginning, -1 if it was not added under exactly this path.
    /// Descriptors of one file share their position. May be called by a signal handler.
    int open(const char *path) const;

private:
    struct File {
        std::string path;
        FileDescriptor descriptor;
    };

    std::vector<File> m_files;
};

} // namespace morvane
