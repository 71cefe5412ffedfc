#include "async/ReadyQueue.h"

#include "async/Suspension.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimerEvent>

namespace morvane {

ReadyQueue::ReadyQueue(std::function<void()> afterEach) : m_afterEach(std::move(afterEach)) {}

ReadyQueue::~ReadyQueue() = default;

void ReadyQueue::push(std::shared_ptr<Suspension> suspension)
{
    const std::lock_guard lock(m_mutex);
    if (m_closed)
        return;
    m_ready.push_back(std::move(suspension));
    m_pushed.notify_one();
    if (!m_wakePosted) {
        m_wakePosted = true;
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }
}

bool ReadyQueue::sliceUsedUp() const
{
    return m_draining && std::chrono::steady_clock::now() >= m_sliceEnd;
}

void ReadyQueue::customEvent(QEvent *)
{
    drain();
}

void ReadyQueue::timerEvent(QTimerEvent *)
{
    m_continue.stop();
    drain();
}

void ReadyQueue::drain()
{
    if (m_draining)
        return;
    m_draining = true;
    m_sliceEnd = std::chrono::steady_clock::now() + timeSlice;
    while (auto suspension = pop()) {
        resume(suspension);
        if (std::chrono::steady_clock::now() >= m_sliceEnd) {
            // A posted event would be served in the same pass of the event loop; a timer of zero waits
            // until input and painting have had their turn.
            m_continue.start(0, this);
            break;
        }
    }
    m_draining = false;
}

std::shared_ptr<Suspension> ReadyQueue::pop()
{
    const std::lock_guard lock(m_mutex);
    if (m_ready.empty()) {
        m_wakePosted = false;
        return nullptr;
    }
    auto suspension = std::move(m_ready.front());
    m_ready.pop_front();
    return suspension;
}

void ReadyQueue::resume(const std::shared_ptr<Suspension> &suspension)
{
    suspension->resume();
    m_afterEach();
}

void ReadyQueue::pumpUntil(const std::function<bool()> &finished,
                           std::chrono::steady_clock::time_point deadline)
{
    while (!finished()) {
        if (auto suspension = pop()) {
            resume(suspension);
            continue;
        }
        std::unique_lock lock(m_mutex);
        if (!m_pushed.wait_until(lock, deadline, [this] { return !m_ready.empty(); }))
            return;
    }
}

void ReadyQueue::close()
{
    m_continue.stop();
    std::deque<std::shared_ptr<Suspension>> dropped;
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    dropped.swap(m_ready);
}

} // namespace morvane
