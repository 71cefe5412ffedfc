#pragma once

#include "base/Json.h"
#include "mcp/MCPConnection.h"
#include "mcp/MCPTransport.h"
#include "mcp/PendingRequests.h"

#include <QList>
#include <functional>
#include <memory>
#include <optional>

namespace morvane {

/// A tool server without a wire, at the other end of a connection's transport: remembers what it is sent, and
/// answers as a test says.
struct FakeToolServer {
    using Object = boost::json::object;
    /// The members of the answer beside its id; nothing for no answer.
    using Answer = std::function<std::optional<Object>(const Object &request)>;

    /// Shakes hands, lists these tools, and has every call answer with the text "called".
    static Answer listing(boost::json::array tools)
    {
        return [tools](const Object &request) -> std::optional<Object> {
            const auto method = stringMember(request, "method");
            if (method == QLatin1String("tools/list"))
                return Object{{"result", Object{{"tools", tools}}}};
            const Object text{{"type", "text"}, {"text", "called"}};
            return Object{{"result", Object{{"content", boost::json::array{text}}}}};
        };
    }

    QList<Object> sent;
    QList<qint64> abandoned;
    Answer answer;
    QString startFailure; ///< Why the transport cannot start, if it cannot.
    bool takesMessages = true;
    int starts = 0;
    int shutdowns = 0;
    int connections = 0;
    std::shared_ptr<PendingRequests> requests;

    qint64 idOf(qsizetype index) const { return integerMember(sent.at(index), "id").value_or(0); }
    void reply(Object message) { requests->deliver(std::move(message)); }
    /// Answers the request that was sent at this place.
    void replyTo(qsizetype index, Object members)
    {
        members["id"] = idOf(index);
        reply(std::move(members));
    }

    MCPConnection::MakeTransport transport();
};

class FakeTransport final : public MCPTransport {
public:
    explicit FakeTransport(FakeToolServer &server) : m_server(server) {}

    Task<void> start() override
    {
        ++m_server.starts;
        ++m_receiver;
        if (!m_server.startFailure.isEmpty())
            throw MCPError(m_server.startFailure);
        co_return;
    }
    quint64 receiver() const override { return m_receiver; }
    bool deliver(QByteArray message, std::optional<qint64> id, Kind) override
    {
        if (!m_server.takesMessages || m_isShutDown)
            return false;
        const auto object = parseJsonObject(message);
        if (!object)
            return false;
        m_server.sent.append(*object);
        if (id && m_server.answer) {
            if (auto members = m_server.answer(*object)) {
                (*members)["id"] = *id;
                m_server.reply(std::move(*members));
            }
        }
        return true;
    }
    void abandon(qint64 id) override { m_server.abandoned.append(id); }
    void shutdown() override
    {
        if (!m_isShutDown)
            ++m_server.shutdowns;
        m_isShutDown = true;
    }

private:
    FakeToolServer &m_server;
    quint64 m_receiver = 0;
    bool m_isShutDown = false;
};

inline MCPConnection::MakeTransport FakeToolServer::transport()
{
    return [this](const std::shared_ptr<PendingRequests> &pending) {
        requests = pending;
        ++connections;
        return std::make_unique<FakeTransport>(*this);
    };
}

} // namespace morvane
