#pragma once

#include <QList>
#include <sys/types.h>

namespace morvane {

/// Writes down what the test program asks of the kernel to keep files, on every thread, for as long as it
/// lives. One at a time.
class FileSteps {
public:
    /// What was asked for a file or a folder, and how large it was then.
    struct Step {
        enum class Kind { synced, renamed };

        Kind kind;
        ino_t inode;
        off_t size;
    };

    FileSteps();
    ~FileSteps();
    FileSteps(const FileSteps &) = delete;
    FileSteps &operator=(const FileSteps &) = delete;

    /// In their order so far. Any thread.
    QList<Step> all() const;
};

} // namespace morvane
