#pragma once

#include <QList>
#include <sys/types.h>

namespace morvane {

/// Writes down what the test program asks of the kernel to keep files, on every thread, for as long as it
/// lives, and lets it fail. One at a time.
class FileSteps {
public:
    /// What was asked for a file or a folder, and how large it was then.
    struct Step {
        enum class Kind { synced, volumeSynced, renamed };

        Kind kind;
        ino_t inode;
        off_t size;
    };

    /// `syncError` is the error number that what brings files to the disk answers; 0 for the system's own
    /// answer.
    explicit FileSteps(int syncError = 0);
    ~FileSteps();
    FileSteps(const FileSteps &) = delete;
    FileSteps &operator=(const FileSteps &) = delete;

    /// In their order so far. Any thread.
    QList<Step> all() const;
};

} // namespace morvane
