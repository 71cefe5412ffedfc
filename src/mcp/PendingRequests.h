#pragma once

#include <QtGlobal>
#include <boost/json/object.hpp>
#include <functional>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace morvane {

/// The requests of one connection that await an answer. Whoever takes a request out resumes its waiter, so
/// that this happens once, whichever of answer, time-out, the server's end or shutdown comes first. Any
/// thread; no waiter is called under the lock.
class PendingRequests {
public:
    /// Called with the whole message that answers, or with nothing if none will come. On any thread.
    using Waiter = std::function<void(std::optional<boost::json::object>)>;

    /// The id of the next request: 1 first.
    qint64 takeNextID();

    /// `receiver` tells which of several servers that the connection has had over time is asked.
    void add(qint64 id, quint64 receiver, Waiter waiter);

    /// Resumes the waiter; false if nobody waits for that id.
    bool resume(qint64 id, std::optional<boost::json::object> message);

    /// Resumes the request that the message answers; drops every other message.
    void deliver(boost::json::object message);

    /// Calls `settled` once when nothing awaits an answer of this receiver any more; at once if so already.
    void whenSettled(quint64 receiver, std::function<void()> settled);

    /// Resumes all that were sent to one receiver with nothing.
    void failSentTo(quint64 receiver);
    void failAll();

    std::size_t count() const;

private:
    struct Request {
        quint64 receiver;
        Waiter waiter;
    };

    template <class Chosen> void failWhere(Chosen chosen);
    bool isAwaited(quint64 receiver) const;
    void tellSettled();

    mutable std::mutex m_mutex;
    qint64 m_nextID = 1; ///< Guarded by m_mutex, as the next two.
    std::unordered_map<qint64, Request> m_requests;
    std::unordered_map<quint64, std::function<void()>> m_whenSettled;
};

} // namespace morvane
