#pragma once

#include <QString>

namespace morvane {

/// Where Morvane's own files lie: in one tree with the same form in the build folder, where it is installed
/// and in a bundle. Its programs find each other by their own places in it, so that it can lie anywhere.
class InstalledFiles {
public:
    /// The tree of the running program, which lies in its `bin`, or in a bundle's `MacOS`. To be asked at the
    /// start: the tree may be moved while the program runs.
    static InstalledFiles aroundProgram();
    /// The same for one of the helper programs.
    static InstalledFiles aroundHelper();

    explicit InstalledFiles(QString root) : m_root(std::move(root)) {}

    /// A program that Morvane starts, by its file name.
    QString helper(const QString &name) const;
    /// A library that Morvane loads when it is wanted, by its file name.
    QString module(const QString &name) const;
    /// The folder with the sounds.
    QString sounds() const;
    /// The page that explains the program.
    QString help() const;
    /// A folder with data of the libraries that a bundle brings along. There is none where the system has
    /// them.
    QString libraryData(const QString &name) const;

private:
    QString m_root;
};

} // namespace morvane
