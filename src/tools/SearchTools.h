#pragma once

#include <QString>

namespace morvane {

/// The tools that search below a folder. Each answers with the text for the model; failures begin with
/// "Error". A leading "~" is a home folder. Hidden files and what lies in hidden folders are passed over, as
/// is what cannot be read; links are not followed. Nothing bounds how many files are looked at. Blocking; any
/// thread.
class SearchTools {
public:
    /// The first 50 lines that a regular expression matches in, of a folder's files or of one file; `include`
    /// limits the files by a name pattern unless it is empty. A last line says so if a file was given up
    /// because matching took too long. Uses the other processors too.
    static QString grepSearch(const QString &pattern, const QString &path, const QString &include);

    /// The first 100 paths, relative to the folder, that a name pattern matches.
    static QString globFind(const QString &pattern, const QString &path);
};

} // namespace morvane
