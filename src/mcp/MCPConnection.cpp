#include "mcp/MCPConnection.h"

#include "async/OffMain.h"
#include "base/Json.h"
#include "mcp/AnswerWait.h"
#include "mcp/JsonRpc.h"

#include <utility>

using namespace std::chrono_literals;

namespace json = boost::json;

namespace morvane {

namespace {

constexpr std::chrono::seconds initializeTimeout = 20s;
constexpr std::chrono::seconds listTimeout = 30s;
constexpr std::chrono::seconds callTimeout = 120s;

/// Arguments above this many bytes are written off the main thread.
constexpr qsizetype smallArguments = 256 * 1024;

QByteArray handshakeParams()
{
    const json::object params{{"protocolVersion", "2025-03-26"},
                              {"capabilities", json::object()},
                              {"clientInfo", {{"name", "Morvane"}, {"version", "1.2"}}}};
    return serializeJson(params);
}

QByteArray callParams(const QString &name, const json::object &arguments)
{
    const json::string jsonName = jsonFromText(name);
    return R"({"name":)" + serializeJson(json::value(jsonName)) + R"(,"arguments":)" +
           serializeJson(arguments) + '}';
}

/// What is left of `room` bytes once the value is written, roughly; below 0 as soon as it does not fit.
qsizetype roomBehind(const json::value &value, qsizetype room)
{
    room -= 8;
    if (value.is_string())
        return room - qsizetype(value.get_string().size());
    if (const json::array *const array = value.if_array())
        for (auto element = array->begin(); element != array->end() && room >= 0; ++element)
            room = roomBehind(*element, room);
    else if (const json::object *const object = value.if_object())
        for (auto member = object->begin(); member != object->end() && room >= 0; ++member)
            room = roomBehind(member->value(), room - qsizetype(member->key().size()));
    return room;
}

bool isSmall(const json::object &arguments)
{
    qsizetype room = smallArguments;
    for (auto member = arguments.begin(); member != arguments.end() && room >= 0; ++member)
        room = roomBehind(member->value(), room - qsizetype(member->key().size()));
    return room >= 0;
}

/// What a handshake answers is not looked at.
std::expected<bool, MCPError> nothingOf(json::object)
{
    return true;
}

std::expected<QList<MCPTool>, MCPError> listedToolsOf(json::object result)
{
    return listedTools(result);
}

std::expected<ToolResult, MCPError> toolResultOf(json::object result)
{
    return toolResult(std::move(result));
}

} // namespace

MCPConnection::MCPConnection(const MakeTransport &makeTransport)
    : m_pending(std::make_shared<PendingRequests>()), m_transport(makeTransport(m_pending))
{
}

MCPConnection::~MCPConnection()
{
    shutdown();
}

Task<void> MCPConnection::connect()
{
    co_await m_transport->start();
    co_await request("initialize", handshakeParams(), initializeTimeout, MCPTransport::Kind::handshake,
                     &nothingOf);
    m_transport->deliver(notificationText("notifications/initialized"), std::nullopt,
                         MCPTransport::Kind::other);
}

Task<QList<MCPTool>> MCPConnection::listTools()
{
    return request("tools/list", "{}", listTimeout, MCPTransport::Kind::other, &listedToolsOf);
}

Task<ToolResult> MCPConnection::callTool(QString name, SharedJsonObject arguments)
{
    QByteArray params;
    if (isSmall(arguments.get()))
        params = callParams(name, arguments.get());
    else
        params = co_await runOffMain([name, arguments] { return callParams(name, arguments.get()); });
    co_return co_await request("tools/call", std::move(params), callTimeout, MCPTransport::Kind::other,
                               &toolResultOf);
}

void MCPConnection::shutdown()
{
    m_pending->failAll();
    m_transport->shutdown();
}

template <class T>
Task<T> MCPConnection::request(QByteArray method, QByteArray params, Clock::Duration timeout,
                               MCPTransport::Kind kind, std::expected<T, MCPError> (*read)(json::object))
{
    const qint64 id = m_pending->takeNextID();
    const auto slot = std::make_shared<AnswerSlot<T>>();
    m_pending->add(id, m_transport->receiver(), [slot, read](std::optional<json::object> message) {
        auto result = resultOf(std::move(message));
        if (result)
            slot->fill(read(*std::move(result)));
        else
            slot->fill(std::unexpected(std::move(result.error())));
    });
    if (!m_transport->deliver(requestText(id, method, params), id, kind))
        m_pending->resume(id, std::nullopt);
    co_return co_await AnswerWait<T>(slot, timeout, [this, id] {
        if (m_pending->resume(id, std::nullopt))
            m_transport->abandon(id);
    });
}

} // namespace morvane
