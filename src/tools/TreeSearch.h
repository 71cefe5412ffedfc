#pragma once

#include "tools/FileSearch.h"
#include "tools/FileWalk.h"

#include <QStringList>
#include <QThreadPool>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

namespace morvane {

/// Searches the files below a folder, several at a time, and keeps what is found in the order of the walk.
class TreeSearch {
public:
    /// `search` must outlive the tree search.
    TreeSearch(const FileSearch &search, std::string root);
    ~TreeSearch();
    TreeSearch(const TreeSearch &) = delete;
    TreeSearch &operator=(const TreeSearch &) = delete;

    /// Walks until there are `enough` lines, of which some more may come, or to the end, or until matching
    /// took too long in too many files. Blocks; to be called once.
    QStringList run(qsizetype enough);

    /// Whether matching took too long in some file, so that lines may be missing.
    bool gaveUp() const { return m_slowFiles > 0; }

private:
    /// Files that one thread searches, one after the other.
    struct Batch {
        std::string paths; ///< With a NUL behind each.
        QStringList lines;
        bool isSearched = false; ///< Then no thread but the caller's touches the batch.
    };

    std::unique_ptr<Batch> collect(std::size_t count);
    void search(Batch &batch, FileSearch::Buffer &buffer);
    void searchWaiting();
    void enqueue(std::unique_ptr<Batch> batch);
    void searchOrWait();
    QStringList takeSearched();

    const FileSearch &m_search;
    FileWalk m_walk;
    FileSearch::Buffer m_buffer;                  ///< The caller's.
    std::deque<std::unique_ptr<Batch>> m_batches; ///< In the order of the walk; the caller's.
    std::atomic<int> m_slowFiles = 0;

    std::mutex m_mutex;
    std::condition_variable m_waitingChanged;
    std::condition_variable m_searched;
    std::deque<Batch *> m_waiting; ///< Those that no thread has taken; guarded.
    std::atomic<bool> m_stops = false;
    QThreadPool m_helpers; ///< Last, since its destructor waits for work that uses the others.
};

} // namespace morvane
