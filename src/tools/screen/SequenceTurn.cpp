#include "tools/screen/SequenceTurn.h"

#include "tools/screen/InputControl.h"

namespace morvane {

void SequenceTurn::lock(const std::stop_token &stop)
{
    std::unique_lock lock(m_mutex);
    if (!m_isFree.wait(lock, stop, [this] { return !m_isTaken; }))
        throw SequenceStopped();
    m_isTaken = true;
}

void SequenceTurn::unlock()
{
    const std::lock_guard lock(m_mutex);
    m_isTaken = false;
    m_isFree.notify_all();
}

} // namespace morvane
