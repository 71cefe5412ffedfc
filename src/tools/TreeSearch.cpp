#include "tools/TreeSearch.h"

#include "tools/Log.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <thread>
#include <utility>

namespace morvane {
namespace {

/// More threads than this gain nothing: most of the time goes to the kernel, which hands out files.
constexpr int mostThreads = 8;
/// Files of a batch: few at first, since many searches end soon.
constexpr std::size_t firstBatch = 16;
constexpr std::size_t largestBatch = 128;
/// Batches for each thread between the walk and what is found. Deep enough that no thread waits for the walk,
/// which is several times as fast as the search.
constexpr std::size_t batchesAhead = 4;
/// Each of them has cost a second.
constexpr int mostSlowFiles = 5;

} // namespace

TreeSearch::TreeSearch(const FileSearch &search, std::string root) : m_search(search), m_walk(std::move(root))
{
    const int threads = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, mostThreads);
    m_helpers.setMaxThreadCount(threads - 1);
}

TreeSearch::~TreeSearch()
{
    const std::lock_guard lock(m_mutex);
    m_stops = true;
    m_waitingChanged.notify_all();
}

QStringList TreeSearch::run(qsizetype enough)
{
    // Few files are searched before a thread has woken up.
    const auto first = collect(firstBatch);
    search(*first, m_buffer);
    QStringList lines = std::move(first->lines);
    for (int helper = 0; helper < m_helpers.maxThreadCount() && lines.size() < enough; ++helper)
        m_helpers.start([this] { searchWaiting(); });

    const auto mostBatches = batchesAhead * static_cast<std::size_t>(m_helpers.maxThreadCount() + 1);
    std::size_t size = firstBatch;
    bool isWalking = true;
    while (lines.size() < enough && m_slowFiles < mostSlowFiles) {
        if (isWalking && m_batches.size() < mostBatches) {
            size = std::min(size * 2, largestBatch);
            auto batch = collect(size);
            isWalking = !batch->paths.empty();
            enqueue(std::move(batch));
        } else if (m_batches.empty()) {
            break;
        } else {
            searchOrWait();
        }
        lines.append(takeSearched());
    }
    return lines;
}

std::unique_ptr<TreeSearch::Batch> TreeSearch::collect(std::size_t count)
{
    auto batch = std::make_unique<Batch>();
    while (count > 0 && m_walk.next()) {
        const FileWalk::Entry entry = m_walk.entry();
        if (entry.kind != FileWalk::Kind::regularFile)
            continue;
        batch->paths.append(entry.path);
        batch->paths.push_back('\0');
        --count;
    }
    return batch;
}

void TreeSearch::search(Batch &batch, FileSearch::Buffer &buffer)
{
    const char *const end = batch.paths.data() + batch.paths.size();
    for (const char *path = batch.paths.data(); path != end && !m_stops; path += std::strlen(path) + 1) {
        if (m_slowFiles >= mostSlowFiles)
            return;
        try {
            const FileSearch::Result result = m_search.search(path, RegularFile::Links::refuse, buffer);
            batch.lines.append(result.lines);
            if (result.gaveUp)
                ++m_slowFiles;
        } catch (const std::bad_alloc &) {
            // Passed over, as any file that cannot be read.
            qCWarning(toolsLog) << "no memory to search a file";
        }
    }
}

void TreeSearch::searchWaiting()
{
    FileSearch::Buffer buffer;
    std::unique_lock lock(m_mutex);
    while (true) {
        m_waitingChanged.wait(lock, [this] { return m_stops || !m_waiting.empty(); });
        if (m_stops)
            return;
        Batch *const batch = m_waiting.front();
        m_waiting.pop_front();
        lock.unlock();
        search(*batch, buffer);
        lock.lock();
        batch->isSearched = true;
        m_searched.notify_one();
    }
}

void TreeSearch::enqueue(std::unique_ptr<Batch> batch)
{
    const std::lock_guard lock(m_mutex);
    m_waiting.push_back(batch.get());
    m_batches.push_back(std::move(batch));
    m_waitingChanged.notify_one();
}

/// The caller works, too; it rests only while the batch that comes next is in a helper's hands.
void TreeSearch::searchOrWait()
{
    std::unique_lock lock(m_mutex);
    if (m_waiting.empty()) {
        m_searched.wait(lock, [this] { return m_batches.front()->isSearched; });
        return;
    }
    Batch *const batch = m_waiting.front();
    m_waiting.pop_front();
    lock.unlock();
    search(*batch, m_buffer);
    lock.lock();
    batch->isSearched = true;
}

QStringList TreeSearch::takeSearched()
{
    QStringList lines;
    const std::lock_guard lock(m_mutex);
    while (!m_batches.empty() && m_batches.front()->isSearched) {
        lines.append(m_batches.front()->lines);
        m_batches.pop_front();
    }
    return lines;
}

} // namespace morvane
