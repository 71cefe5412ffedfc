#include "tools/TreeSearch.h"

#include <algorithm>
#include <new>
#include <thread>
#include <utility>

namespace morvane {
namespace {

/// More threads than this gain nothing: most of the time goes to the kernel, which hands out files.
constexpr unsigned mostThreads = 8;
/// Files that are searched before anything is merged: few at first, since many searches end soon.
constexpr std::size_t firstBatch = 16;
constexpr std::size_t largestBatch = 512;
/// Each of them has cost a second.
constexpr int mostSlowFiles = 5;

} // namespace

TreeSearch::TreeSearch(const FileSearch &search, std::string root)
    : m_search(search), m_walk(std::move(root)),
      m_buffers(std::clamp(std::thread::hardware_concurrency(), 1u, mostThreads))
{
}

QStringList TreeSearch::run(qsizetype enough)
{
    QStringList lines;
    std::size_t batch = firstBatch;
    while (lines.size() < enough && m_slowFiles < mostSlowFiles && collect(batch)) {
        searchBatch();
        for (const FileSearch::Result &result : m_results)
            lines.append(result.lines);
        batch = std::min(batch * 2, largestBatch);
    }
    return lines;
}

bool TreeSearch::collect(std::size_t count)
{
    m_paths.clear();
    while (m_paths.size() < count && m_walk.next()) {
        const FileWalk::Entry entry = m_walk.entry();
        if (entry.kind == FileWalk::Kind::regularFile)
            m_paths.emplace_back(entry.path);
    }
    m_results.assign(m_paths.size(), {});
    m_nextPath = 0;
    return !m_paths.empty();
}

void TreeSearch::searchBatch()
{
    // Few files are searched before a thread has woken up.
    if (m_paths.size() > firstBatch) {
        for (std::size_t i = 1; i < m_buffers.size(); ++i)
            m_helpers.start([this, &buffer = m_buffers[i]] { searchFiles(buffer); });
    }
    searchFiles(m_buffers.front());
    m_helpers.waitForDone();
}

void TreeSearch::searchFiles(FileSearch::Buffer &buffer)
{
    while (m_slowFiles < mostSlowFiles) {
        const std::size_t taken = m_nextPath++;
        if (taken >= m_paths.size())
            return;
        try {
            m_results[taken] = m_search.search(m_paths[taken].c_str(), RegularFile::Links::refuse, buffer);
        } catch (const std::bad_alloc &) {
            continue; // passed over, as any file that cannot be read
        }
        if (m_results[taken].gaveUp)
            ++m_slowFiles;
    }
}

} // namespace morvane
