#include "support/ScriptedModel.h"

#include "support/ScriptedModelConnection.h"

#include <arpa/inet.h>
#include <boost/json.hpp>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace morvane {
namespace {

namespace json = boost::json;
using namespace std::chrono_literals;

constexpr std::string_view titlePromptBegins = "Generate a very short title";

ScriptedTurn wholeAnswer(int status, const json::value &body)
{
    return ScriptedTurn::failing(status, json::serialize(body));
}

json::value errorObject(const std::string &message)
{
    return json::object{{"error", json::object{{"message", message}}}};
}

std::string textOf(const json::value &content)
{
    if (content.is_string())
        return std::string(content.get_string());
    std::string result;
    if (content.is_array()) {
        for (const json::value &part : content.get_array()) {
            if (const auto *object = part.if_object()) {
                if (const auto *text = object->if_contains("text"); text && text->is_string())
                    result += std::string_view(text->get_string());
            }
        }
    }
    return result;
}

/// The system prompt of a request in either dialect, empty if it has none.
std::string systemPrompt(const json::value &body)
{
    json::error_code error;
    if (const auto *role = body.find_pointer("/messages/0/role", error); role && *role == "system") {
        if (const auto *content = body.find_pointer("/messages/0/content", error))
            return textOf(*content);
    }
    if (const auto *parts = body.find_pointer("/systemInstruction/parts", error))
        return textOf(*parts);
    return {};
}

/// The text of the last message of a request in either dialect.
std::string lastMessage(const json::value &body)
{
    const auto *object = body.if_object();
    if (!object)
        return {};
    for (const auto &[list, content] : {std::pair{"messages", "content"}, std::pair{"contents", "parts"}}) {
        const auto *entries = object->if_contains(list);
        if (!entries || !entries->is_array() || entries->get_array().empty())
            continue;
        const auto *last = entries->get_array().back().if_object();
        const auto *value = last ? last->if_contains(content) : nullptr;
        if (value)
            return textOf(*value);
    }
    return {};
}

} // namespace

std::string ScriptedRequest::toJson() const
{
    json::object names;
    for (const auto &[name, value] : headers)
        names[name] = value;
    json::object object{{"method", method},
                        {"target", target},
                        {"headers", std::move(names)},
                        {"json", json},
                        {"turn", turn},
                        {"received_us", received.count()},
                        {"since_last_answer_us", sinceLastAnswer.count()}};
    if (json.is_null())
        object["body"] = body;
    return json::serialize(object);
}

ScriptedModel::ScriptedModel(ModelScript script, std::uint16_t port, RequestObserver observer)
    : m_observer(std::move(observer)), m_script(std::move(script))
{
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int reuse = 1;
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t size = sizeof address;
    if (::bind(m_listener, reinterpret_cast<sockaddr *>(&address), size) != 0 ||
        ::listen(m_listener, 64) != 0 ||
        ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
        const int code = errno;
        ::close(m_listener);
        throw std::system_error(code, std::generic_category(), "scripted model cannot listen");
    }
    m_port = ntohs(address.sin_port);
    m_acceptor = std::jthread([this] { acceptConnections(); });
}

ScriptedModel::~ScriptedModel()
{
    m_stopping = true;
    m_changed.notify_all();
    ::shutdown(m_listener, SHUT_RDWR);
    m_acceptor.join();
    ::close(m_listener);
    std::list<Connection> connections;
    {
        const std::lock_guard lock(m_mutex);
        connections.swap(m_connections);
        for (const Connection &connection : connections)
            if (connection.descriptor >= 0)
                ::shutdown(connection.descriptor, SHUT_RDWR);
    }
    for (Connection &connection : connections)
        connection.thread.join();
}

std::string ScriptedModel::baseURL() const
{
    return "http://127.0.0.1:" + std::to_string(m_port);
}

void ScriptedModel::acceptConnections()
{
    while (!m_stopping) {
        const int descriptor = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0)
            continue;
        const int noDelay = 1;
        ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
        const std::lock_guard lock(m_mutex);
        Connection &connection = m_connections.emplace_back();
        connection.descriptor = descriptor;
        connection.thread = std::jthread([this, &connection, descriptor] {
            ScriptedModelConnection(*this, descriptor).serve();
            const std::lock_guard closing(m_mutex);
            ::close(descriptor);
            connection.descriptor = -1;
        });
    }
}

void ScriptedModel::appendTurn(ScriptedTurn turn)
{
    const std::lock_guard lock(m_mutex);
    m_script.turns.push_back(std::move(turn));
}

void ScriptedModel::release(int count)
{
    {
        const std::lock_guard lock(m_mutex);
        m_releases += count;
    }
    m_changed.notify_all();
}

std::vector<ScriptedRequest> ScriptedModel::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

bool ScriptedModel::waitForRequests(std::size_t count, std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [&] { return m_requests.size() >= count; });
}

bool ScriptedModel::waitForAbandoned(std::size_t count, std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [&] { return m_abandoned >= count; });
}

ScriptedTurn ScriptedModel::take(ScriptedRequest &request)
{
    const auto now = std::chrono::steady_clock::now();
    ScriptedTurn turn;
    {
        const std::lock_guard lock(m_mutex);
        request.received = std::chrono::duration_cast<std::chrono::microseconds>(now - m_start);
        if (m_lastAnswer)
            request.sinceLastAnswer =
                std::chrono::duration_cast<std::chrono::microseconds>(now - *m_lastAnswer);
        turn = answerFor(request);
        m_requests.push_back(request);
        if (m_observer)
            m_observer(request);
    }
    m_changed.notify_all();
    return turn;
}

ScriptedTurn ScriptedModel::answerFor(ScriptedRequest &request)
{
    const std::string path = request.target.substr(0, request.target.find('?'));
    const std::string address = request.method + " " + path;
    for (const auto &[route, turn] : m_script.routes)
        if (route == address)
            return turn;
    if (address == "GET /api/version")
        return wholeAnswer(200, json::object{{"version", m_script.ollamaVersion}});
    if (address == "GET /api/tags") {
        json::array models;
        for (const std::string &name : m_script.models)
            models.push_back(json::object{{"name", name}, {"model", name}});
        return wholeAnswer(200, json::object{{"models", std::move(models)}});
    }
    if (address == "POST /control/release") {
        ++m_releases;
        return wholeAnswer(200, json::object{});
    }
    if (request.method != "POST" ||
        !(path.ends_with("/chat/completions") || path.ends_with(":streamGenerateContent")))
        return wholeAnswer(404, errorObject("The script knows no " + address));

    const std::string system = systemPrompt(request.json);
    for (const ScriptRule &rule : m_script.rules)
        if (system.starts_with(rule.systemBegins) &&
            lastMessage(request.json).find(rule.lastMessageContains) != std::string::npos)
            return rule.turn;
    if (system.starts_with(titlePromptBegins))
        return ScriptedTurn::saying({m_script.title});
    if (m_nextTurn < m_script.turns.size()) {
        request.turn = static_cast<int>(m_nextTurn);
        return m_script.turns[m_nextTurn++];
    }
    if (m_script.afterwards)
        return *m_script.afterwards;
    return wholeAnswer(400, errorObject("The script has no more turns."));
}

void ScriptedModel::answered(bool abandoned)
{
    {
        const std::lock_guard lock(m_mutex);
        m_lastAnswer = std::chrono::steady_clock::now();
        if (abandoned)
            ++m_abandoned;
    }
    m_changed.notify_all();
}

bool ScriptedModel::waitForRelease(int descriptor)
{
    std::unique_lock lock(m_mutex);
    while (!m_stopping) {
        if (m_releases > 0) {
            --m_releases;
            return true;
        }
        pollfd client{descriptor, POLLRDHUP, 0};
        if (::poll(&client, 1, 0) > 0)
            return false;
        m_changed.wait_for(lock, 5ms);
    }
    return false;
}

} // namespace morvane
