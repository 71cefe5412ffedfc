#pragma once

#include <QString>

namespace morvane {

/// What a replacement in a file covers.
enum class Occurrences { single, all };

/// The tools that list, read, write and change files. Each answers with the text for the model and never
/// throws but for lack of memory; failures begin with "Error". A leading "~" is a home folder. Limits in
/// characters are in those that a user perceives. Blocking; any thread.
class FileTools {
public:
    /// The first 199 names in Unicode order, hidden ones included, folders with "/" behind them.
    static QString listDirectory(const QString &path);

    /// The text without white space at its ends, up to 8,000 characters, of a file up to 2,000,000 bytes.
    static QString readFile(const QString &path);

    /// Replaces or creates the file as a whole and makes the folders above it. Permissions and links stay.
    static QString writeFile(const QString &path, const QString &content);

    /// Replaces `oldString` where it stands literally; with Occurrences::single it must stand there once.
    /// Files up to 100 MB, before and after.
    static QString editFile(const QString &path, const QString &oldString, const QString &newString,
                            Occurrences occurrences);
};

} // namespace morvane
