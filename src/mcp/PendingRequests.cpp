#include "mcp/PendingRequests.h"

#include "mcp/JsonRpc.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace json = boost::json;

namespace morvane {

qint64 PendingRequests::takeNextID()
{
    const std::lock_guard lock(m_mutex);
    return m_nextID++;
}

void PendingRequests::add(qint64 id, quint64 receiver, Waiter waiter)
{
    const std::lock_guard lock(m_mutex);
    m_requests.insert_or_assign(id, Request{receiver, std::move(waiter)});
}

bool PendingRequests::resume(qint64 id, std::optional<json::object> message)
{
    std::unique_lock lock(m_mutex);
    const auto request = m_requests.extract(id);
    lock.unlock();
    if (request.empty())
        return false;
    request.mapped().waiter(std::move(message));
    tellSettled();
    return true;
}

void PendingRequests::deliver(json::object message)
{
    if (const auto id = answeredID(message))
        resume(*id, std::move(message));
}

void PendingRequests::whenSettled(quint64 receiver, std::function<void()> settled)
{
    {
        const std::lock_guard lock(m_mutex);
        m_whenSettled.insert_or_assign(receiver, std::move(settled));
    }
    tellSettled();
}

void PendingRequests::failSentTo(quint64 receiver)
{
    failWhere([receiver](const Request &request) { return request.receiver == receiver; });
}

void PendingRequests::failAll()
{
    failWhere([](const Request &) { return true; });
}

std::size_t PendingRequests::count() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests.size();
}

template <class Chosen> void PendingRequests::failWhere(Chosen chosen)
{
    std::vector<Waiter> waiters;
    {
        const std::lock_guard lock(m_mutex);
        for (auto request = m_requests.begin(); request != m_requests.end();) {
            if (chosen(request->second)) {
                waiters.push_back(std::move(request->second.waiter));
                request = m_requests.erase(request);
            } else {
                ++request;
            }
        }
    }
    for (const Waiter &waiter : waiters)
        waiter(std::nullopt);
    tellSettled();
}

bool PendingRequests::isAwaited(quint64 receiver) const
{
    return std::any_of(m_requests.begin(), m_requests.end(),
                       [receiver](const auto &request) { return request.second.receiver == receiver; });
}

void PendingRequests::tellSettled()
{
    std::vector<std::function<void()>> settled;
    {
        const std::lock_guard lock(m_mutex);
        for (auto entry = m_whenSettled.begin(); entry != m_whenSettled.end();) {
            if (isAwaited(entry->first)) {
                ++entry;
            } else {
                settled.push_back(std::move(entry->second));
                entry = m_whenSettled.erase(entry);
            }
        }
    }
    for (const auto &call : settled)
        call();
}

} // namespace morvane
