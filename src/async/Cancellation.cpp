#include "async/Cancellation.h"

#include <utility>

namespace morvane {

Cancellation::Callback::Callback(Cancellation &owner, std::function<void()> function)
    : m_owner(&owner), m_entry(owner.m_callbacks.insert(owner.m_callbacks.end(), std::move(function)))
{
}

Cancellation::Callback::~Callback()
{
    if (m_owner)
        m_owner->remove(m_entry);
}

Cancellation::Callback::Callback(Callback &&other) noexcept
    : m_owner(std::exchange(other.m_owner, nullptr)), m_entry(other.m_entry)
{
}

Cancellation::Callback &Cancellation::Callback::operator=(Callback &&other) noexcept
{
    if (this != &other) {
        if (m_owner)
            m_owner->remove(m_entry);
        m_owner = std::exchange(other.m_owner, nullptr);
        m_entry = other.m_entry;
    }
    return *this;
}

void Cancellation::cancel()
{
    if (m_cancelled)
        return;
    m_cancelled = true;
    m_next = m_callbacks.begin();
    while (m_next != m_callbacks.end()) {
        // Entries stay in the list, emptied, so that each Callback can still remove its own.
        const auto function = std::exchange(*m_next++, nullptr);
        if (function)
            function();
    }
}

void Cancellation::remove(Entry entry)
{
    if (entry == m_next)
        ++m_next;
    m_callbacks.erase(entry);
}

} // namespace morvane
