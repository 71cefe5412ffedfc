#include "async/RootTask.h"

#include "async/Scheduler.h"

namespace morvane {

void RootTaskBase::setBody(Task<void> body)
{
    m_body.emplace(std::move(body));
    m_body->handle().promise().context = {&m_scheduler, &m_cancellation};
}

void RootTaskBase::start(const std::shared_ptr<ReadyQueue> &queue)
{
    m_start = std::make_shared<Suspension>(queue, m_body->handle());
    m_start->fire();
}

void RootTaskBase::drop()
{
    if (m_start)
        m_start->detach();
    m_body.reset();
}

void RootTaskBase::retire()
{
    m_scheduler.retire(*this);
}

} // namespace morvane
