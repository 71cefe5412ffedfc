#pragma once

#include "tools/FileSearch.h"
#include "tools/FileWalk.h"

#include <QStringList>
#include <QThreadPool>
#include <atomic>
#include <string>
#include <vector>

namespace morvane {

/// Searches the files below a folder, several at a time, and keeps what is found in the order of the walk.
class TreeSearch {
public:
    /// `search` must outlive the tree search.
    TreeSearch(const FileSearch &search, std::string root);

    /// Walks until there are `enough` lines, of which some more may come, or to the end, or until matching
    /// took too long in too many files. Blocks.
    QStringList run(qsizetype enough);

    /// Whether matching took too long in some file, so that lines may be missing.
    bool gaveUp() const { return m_slowFiles > 0; }

private:
    bool collect(std::size_t count);
    void searchBatch();
    void searchFiles(FileSearch::Buffer &buffer);

    const FileSearch &m_search;
    FileWalk m_walk;
    std::vector<std::string> m_paths;          ///< The files of the batch.
    std::vector<FileSearch::Result> m_results; ///< For each path.
    std::vector<FileSearch::Buffer> m_buffers; ///< For each thread; the first is the caller's.
    std::atomic<std::size_t> m_nextPath = 0;   ///< The first that no thread has taken.
    std::atomic<int> m_slowFiles = 0;
    QThreadPool m_helpers; ///< Last, since its destructor waits for work that uses the others.
};

} // namespace morvane
