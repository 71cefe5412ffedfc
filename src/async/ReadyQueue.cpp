#include "async/ReadyQueue.h"

#include "async/Suspension.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QTimerEvent>

namespace morvane {

/// The queue's turns in the event loop. A QObject must end on its own thread, which those who push are not.
class ReadyQueue::Turns : public QObject {
public:
    explicit Turns(ReadyQueue &queue) : m_queue(queue) {}

    /// Asks for a turn after input and painting have had theirs: a posted event would be served in the same
    /// pass of the event loop, a timer of zero is not.
    void askForLater() { m_later.start(0, this); }

protected:
    void customEvent(QEvent *) override { m_queue.drain(); }
    void timerEvent(QTimerEvent *) override
    {
        m_later.stop();
        m_queue.drain();
    }

private:
    ReadyQueue &m_queue;
    QBasicTimer m_later;
};

ReadyQueue::ReadyQueue(std::function<void()> afterEach)
    : m_afterEach(std::move(afterEach)), m_turns(std::make_unique<Turns>(*this))
{
}

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
        QCoreApplication::postEvent(m_turns.get(), new QEvent(QEvent::User));
    }
}

bool ReadyQueue::sliceUsedUp() const
{
    return m_draining && std::chrono::steady_clock::now() >= m_sliceEnd;
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
            m_turns->askForLater();
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
        if (std::chrono::steady_clock::now() >= deadline)
            return;
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
    std::deque<std::shared_ptr<Suspension>> dropped;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        dropped.swap(m_ready);
    }
    m_turns.reset();
}

} // namespace morvane
