#include "support/ScriptedEvents.h"

#include <boost/json.hpp>

namespace morvane {
namespace {

namespace json = boost::json;

std::string joined(const std::vector<std::string> &fragments)
{
    std::string result;
    for (const std::string &fragment : fragments)
        result += fragment;
    return result;
}

} // namespace

ScriptedEvents::ScriptedEvents(ModelDialect dialect, std::string lineEnd)
    : m_dialect(dialect), m_lineEnd(std::move(lineEnd))
{
}

std::string ScriptedEvents::event(const std::string &data) const
{
    return "data: " + data + m_lineEnd + m_lineEnd;
}

std::string ScriptedEvents::chatChunk(const std::string &delta, const std::string &finish) const
{
    return event(R"({"id":"chatcmpl-scripted","object":"chat.completion.chunk","created":1750000000,)"
                 R"("model":"scripted","choices":[{"index":0,"delta":)" +
                 delta + R"(,"finish_reason":)" + finish + "}]}");
}

std::string ScriptedEvents::text(const std::string &piece) const
{
    const std::string quoted = json::serialize(json::value(piece));
    if (m_dialect == ModelDialect::chatCompletions)
        return chatChunk(R"({"content":)" + quoted + "}", "null");
    return event(R"({"candidates":[{"content":{"parts":[{"text":)" + quoted +
                 R"(}],"role":"model"},"index":0}],"modelVersion":"scripted"})");
}

std::vector<std::string> ScriptedEvents::call(const ScriptedCall &call)
{
    const int place = m_callCount++;
    const std::string id = call.id.empty() ? "call_" + std::to_string(place + 1) : call.id;
    if (m_dialect == ModelDialect::gemini) {
        const std::string arguments = joined(call.argumentFragments);
        json::object part{{"functionCall", json::object{{"name", call.name}, {"id", id}}}};
        if (!arguments.empty())
            part["functionCall"].as_object()["args"] = json::parse(arguments);
        if (!call.thoughtSignature.empty())
            part["thoughtSignature"] = call.thoughtSignature;
        return {event(R"({"candidates":[{"content":{"parts":[)" + json::serialize(part) +
                      R"(],"role":"model"},"index":0}],"modelVersion":"scripted"})")};
    }
    const int index = call.index.value_or(place);
    const auto delta = [](const json::object &element) {
        return json::serialize(json::object{{"tool_calls", json::array{element}}});
    };
    std::vector<std::string> events;
    events.push_back(chatChunk(delta({{"index", index},
                                      {"id", id},
                                      {"type", "function"},
                                      {"function", {{"name", call.name}, {"arguments", ""}}}}),
                               "null"));
    for (const std::string &fragment : call.argumentFragments)
        events.push_back(chatChunk(
            delta({{"index", index}, {"function", json::object{{"arguments", fragment}}}}), "null"));
    return events;
}

std::string ScriptedEvents::error(const std::string &message) const
{
    return event(json::serialize(
        json::object{{"error", json::object{{"message", message}, {"type", "server_error"}}}}));
}

std::string ScriptedEvents::end(const ScriptedTurn &turn) const
{
    if (m_dialect == ModelDialect::gemini)
        return event(R"({"candidates":[{"content":{"parts":[{"text":""}],"role":"model"},"finishReason":)" +
                     json::serialize(json::value(turn.finish.value_or("STOP"))) +
                     R"(,"index":0}],"modelVersion":"scripted"})");
    const std::string finish = turn.finish.value_or(m_callCount > 0 ? "tool_calls" : "stop");
    std::string result = chatChunk("{}", json::serialize(json::value(finish)));
    if (turn.doneMarker)
        result += event("[DONE]");
    return result;
}

} // namespace morvane
