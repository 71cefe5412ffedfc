#include "async/Scheduler.h"

#include <algorithm>

namespace morvane {

Scheduler::Scheduler(Clock &clock)
    : m_clock(clock), m_queue(std::make_shared<ReadyQueue>([this] {
          // The frames of ended tasks go here, after the resumption that ended them has returned.
          for (auto &root : std::exchange(m_retired, {}))
              root->drop();
      }))
{
}

Scheduler::~Scheduler()
{
    shutdown(std::chrono::milliseconds(0));
}

void Scheduler::start(std::shared_ptr<RootTaskBase> root)
{
    root->start(m_queue);
    m_roots.push_back(std::move(root));
}

void Scheduler::retire(RootTaskBase &root)
{
    const auto found = std::find_if(m_roots.begin(), m_roots.end(),
                                    [&root](const auto &candidate) { return candidate.get() == &root; });
    m_retired.push_back(std::move(*found));
    m_roots.erase(found);
}

void Scheduler::shutdown(std::chrono::milliseconds limit)
{
    for (const auto &root : std::vector(m_roots.rbegin(), m_roots.rend()))
        root->cancellation().cancel();
    if (limit.count() > 0)
        m_queue->pumpUntil([this] { return m_roots.empty(); }, std::chrono::steady_clock::now() + limit);
    m_queue->close();
    while (!m_roots.empty()) {
        const auto root = std::move(m_roots.back());
        m_roots.pop_back();
        root->drop();
    }
}

} // namespace morvane
