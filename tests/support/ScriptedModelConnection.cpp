#include "support/ScriptedModelConnection.h"

#include <algorithm>
#include <boost/json.hpp>
#include <charconv>
#include <poll.h>
#include <sys/socket.h>

namespace morvane {
namespace {

template <class... Functions> struct Overloaded : Functions... {
    using Functions::operator()...;
};

std::string lowerCase(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](unsigned char c) { return std::tolower(c); });
    return result;
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

/// Method, target and headers out of everything before the empty line.
void parseHead(std::string_view head, ScriptedRequest &request)
{
    const std::string_view line = head.substr(0, head.find("\r\n"));
    const std::size_t first = std::min(line.find(' '), line.size());
    const std::size_t last = std::min(line.rfind(' '), line.size());
    request.method = line.substr(0, first);
    if (last > first)
        request.target = line.substr(first + 1, last - first - 1);
    std::size_t position = head.find("\r\n");
    while (position != std::string_view::npos) {
        const std::size_t begin = position + 2;
        position = head.find("\r\n", begin);
        const std::string_view header = head.substr(begin, position - begin);
        const std::size_t colon = header.find(':');
        if (colon != std::string_view::npos)
            request.headers[lowerCase(header.substr(0, colon))] = trimmed(header.substr(colon + 1));
    }
}

} // namespace

ScriptedModelConnection::ScriptedModelConnection(ScriptedModel &server, int descriptor)
    : m_server(server), m_descriptor(descriptor)
{
}

void ScriptedModelConnection::serve()
{
    while (true) {
        ScriptedRequest request;
        if (!readRequest(request))
            return;
        const ScriptedTurn turn = m_server.take(request);
        const bool complete = answer(request, turn);
        m_server.answered(!complete && !m_wasReset);
        if (!complete)
            return;
    }
}

bool ScriptedModelConnection::fill()
{
    char bytes[65536];
    const ssize_t count = ::recv(m_descriptor, bytes, sizeof bytes, 0);
    if (count <= 0)
        return false;
    m_buffer.append(bytes, static_cast<std::size_t>(count));
    return true;
}

bool ScriptedModelConnection::readRequest(ScriptedRequest &request)
{
    std::size_t headEnd = 0;
    while ((headEnd = m_buffer.find("\r\n\r\n")) == std::string::npos)
        if (!fill())
            return false;
    parseHead(std::string_view(m_buffer).substr(0, headEnd), request);
    std::size_t length = 0;
    if (const auto header = request.headers.find("content-length"); header != request.headers.end())
        std::from_chars(header->second.data(), header->second.data() + header->second.size(), length);
    if (const auto expect = request.headers.find("expect");
        expect != request.headers.end() && m_buffer.size() < headEnd + 4 + length) {
        if (!writeAll("HTTP/1.1 100 Continue\r\n\r\n"))
            return false;
    }
    m_buffer.erase(0, headEnd + 4);
    while (m_buffer.size() < length)
        if (!fill())
            return false;
    request.body = m_buffer.substr(0, length);
    m_buffer.erase(0, length);
    boost::json::error_code error;
    request.json = boost::json::parse(request.body, error);
    if (error)
        request.json = nullptr;
    return true;
}

bool ScriptedModelConnection::answer(const ScriptedRequest &request, const ScriptedTurn &turn)
{
    m_segmentBytes = turn.segmentBytes;
    if (turn.body)
        return answerWhole(turn, *turn.body);
    if (turn.status != 200 && turn.steps.empty())
        return answerWhole(turn, {});
    const bool gemini = request.target.find(":streamGenerateContent") != std::string::npos;
    return answerStream(turn, gemini ? ModelDialect::gemini : ModelDialect::chatCompletions);
}

bool ScriptedModelConnection::writeHead(const ScriptedTurn &turn, std::string_view contentType,
                                        std::string_view framing)
{
    std::string head = "HTTP/1.1 " + std::to_string(turn.status) + " Scripted\r\n";
    bool typeGiven = false;
    for (const auto &[name, value] : turn.headers) {
        typeGiven = typeGiven || lowerCase(name) == "content-type";
        head.append(name).append(": ").append(value).append("\r\n");
    }
    if (!typeGiven)
        head.append("Content-Type: ").append(contentType).append("\r\n");
    head.append(framing).append("\r\n\r\n");
    return writeAll(head);
}

bool ScriptedModelConnection::answerWhole(const ScriptedTurn &turn, const std::string &body)
{
    const std::string length = "Content-Length: " + std::to_string(body.size());
    if (!writeHead(turn, "application/json", length))
        return false;
    const std::size_t segment = m_segmentBytes == 0 ? body.size() : m_segmentBytes;
    for (std::size_t sent = 0; sent < body.size(); sent += segment)
        if (!writeAll(std::string_view(body).substr(sent, segment)))
            return false;
    return true;
}

bool ScriptedModelConnection::answerStream(const ScriptedTurn &turn, ModelDialect dialect)
{
    if (!writeHead(turn, "text/event-stream", "Transfer-Encoding: chunked"))
        return false;
    ScriptedEvents events(dialect, turn.lineEnd);
    bool failed = false;
    for (const ScriptStep &step : turn.steps) {
        if (!perform(step, events))
            return false;
        failed = failed || std::holds_alternative<step::Error>(step);
    }
    if (!failed && !writeChunk(events.end(turn)))
        return false;
    return writeAll("0\r\n\r\n");
}

bool ScriptedModelConnection::perform(const ScriptStep &step, ScriptedEvents &events)
{
    return std::visit(
        Overloaded{
            [&](const step::Text &text) { return writeChunk(events.text(text.piece)); },
            [&](const step::Call &call) {
                for (const std::string &event : events.call(call.call))
                    if (!writeChunk(event))
                        return false;
                return true;
            },
            [&](const step::Error &error) { return writeChunk(events.error(error.message)); },
            [&](const step::Raw &raw) { return writeChunk(raw.bytes); },
            [&](const step::Stall &) { return m_server.waitForRelease(m_descriptor); },
            [&](const step::Burst &burst) { return this->burst(events.text("word "), burst.tokens); },
            [&](const step::Endless &endless) {
                const std::string event = events.text(endless.piece);
                while (!m_server.m_stopping && writeChunk(event)) {
                }
                return false;
            },
            [&](const step::Reset &) {
                reset();
                return false;
            },
        },
        step);
}

bool ScriptedModelConnection::burst(const std::string &event, std::size_t count)
{
    constexpr std::size_t blockBytes = 65536;
    const std::size_t eventsPerBlock = std::max<std::size_t>(1, blockBytes / event.size());
    std::string block;
    for (std::size_t i = 0; i < std::min(eventsPerBlock, count); ++i)
        block += event;
    for (std::size_t sent = 0; sent < count; sent += eventsPerBlock) {
        const std::size_t events = std::min(eventsPerBlock, count - sent);
        if (!writeChunk(std::string_view(block).substr(0, events * event.size())))
            return false;
    }
    return true;
}

bool ScriptedModelConnection::writeChunk(std::string_view bytes)
{
    const std::size_t segment = m_segmentBytes == 0 ? bytes.size() : m_segmentBytes;
    while (!bytes.empty()) {
        const std::string_view part = bytes.substr(0, segment);
        char size[16];
        const auto end = std::to_chars(size, size + sizeof size, part.size(), 16).ptr;
        std::string chunk(size, end);
        chunk.append("\r\n").append(part).append("\r\n");
        if (!writeAll(chunk))
            return false;
        bytes.remove_prefix(part.size());
    }
    return true;
}

bool ScriptedModelConnection::writeAll(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

void ScriptedModelConnection::reset()
{
    m_wasReset = true;
    // Closing with a zero linger time sends RST instead of FIN; the owner closes the descriptor.
    const linger immediately{1, 0};
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &immediately, sizeof immediately);
}

} // namespace morvane
