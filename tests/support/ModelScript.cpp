#include "support/ModelScript.h"

#include <boost/json.hpp>
#include <initializer_list>
#include <stdexcept>

namespace morvane {
namespace {

namespace json = boost::json;

const json::object &objectWithKeys(const json::value &value, const char *what,
                                   std::initializer_list<std::string_view> keys)
{
    if (!value.is_object())
        throw std::runtime_error(std::string("script: ") + what + " must be an object");
    for (const auto &member : value.get_object()) {
        bool known = false;
        for (std::string_view key : keys)
            known = known || key == std::string_view(member.key());
        if (!known)
            throw std::runtime_error(std::string("script: ") + what + " has an unknown key \"" +
                                     std::string(member.key()) + "\"");
    }
    return value.get_object();
}

std::string text(const json::value &value, const char *what)
{
    if (!value.is_string())
        throw std::runtime_error(std::string("script: ") + what + " must be a string");
    return std::string(value.get_string());
}

template <typename Number> Number number(const json::value &value, const char *what)
{
    json::error_code error;
    const auto result = value.to_number<Number>(error);
    if (error)
        throw std::runtime_error(std::string("script: ") + what + " must be an integer in range");
    return result;
}

std::vector<std::string> texts(const json::value &value, const char *what)
{
    std::vector<std::string> result;
    if (value.is_string())
        return {text(value, what)};
    if (!value.is_array())
        throw std::runtime_error(std::string("script: ") + what + " must be a list of strings");
    for (const json::value &element : value.get_array())
        result.push_back(text(element, what));
    return result;
}

ScriptedCall call(const json::value &value)
{
    const auto &object = objectWithKeys(
        value, "a call", {"name", "arguments", "fragments", "id", "index", "thought_signature"});
    ScriptedCall result;
    if (const auto *name = object.if_contains("name"))
        result.name = text(*name, "a call's name");
    if (const auto *arguments = object.if_contains("arguments"))
        result.argumentFragments = {json::serialize(*arguments)};
    if (const auto *fragments = object.if_contains("fragments"))
        result.argumentFragments = texts(*fragments, "a call's fragments");
    if (const auto *id = object.if_contains("id"))
        result.id = text(*id, "a call's id");
    if (const auto *index = object.if_contains("index"))
        result.index = number<int>(*index, "a call's index");
    if (const auto *signature = object.if_contains("thought_signature"))
        result.thoughtSignature = text(*signature, "a call's thought_signature");
    return result;
}

ScriptStep scriptStep(const json::value &value)
{
    const auto &object = objectWithKeys(
        value, "a step", {"text", "call", "error", "raw", "stall", "burst", "endless", "reset"});
    if (object.size() != 1)
        throw std::runtime_error("script: a step must have exactly one key");
    const auto &[key, content] = *object.begin();
    if (key == "text")
        return step::Text{text(content, "a step's text")};
    if (key == "call")
        return step::Call{call(content)};
    if (key == "error")
        return step::Error{text(content, "a step's error")};
    if (key == "raw")
        return step::Raw{text(content, "a step's raw")};
    if (key == "stall")
        return step::Stall{};
    if (key == "burst")
        return step::Burst{number<std::size_t>(content, "burst")};
    if (key == "endless")
        return step::Endless{text(content, "endless")};
    return step::Reset{};
}

ScriptedTurn turn(const json::value &value)
{
    const auto &object = objectWithKeys(value, "a turn",
                                        {"text", "steps", "calls", "finish", "done", "status", "headers",
                                         "body", "segment_bytes", "line_end"});
    ScriptedTurn result;
    if (const auto *pieces = object.if_contains("text"))
        for (std::string &piece : texts(*pieces, "a turn's text"))
            result.steps.push_back(step::Text{std::move(piece)});
    if (const auto *steps = object.if_contains("steps"))
        for (const json::value &element : steps->as_array())
            result.steps.push_back(scriptStep(element));
    if (const auto *calls = object.if_contains("calls"))
        for (const json::value &element : calls->as_array())
            result.steps.push_back(step::Call{call(element)});
    if (const auto *finish = object.if_contains("finish"))
        result.finish = text(*finish, "a turn's finish");
    if (const auto *done = object.if_contains("done"))
        result.doneMarker = done->as_bool();
    if (const auto *status = object.if_contains("status"))
        result.status = number<int>(*status, "a turn's status");
    if (const auto *headers = object.if_contains("headers"))
        for (const auto &header : headers->as_object())
            result.headers.emplace_back(header.key(), text(header.value(), "a header"));
    if (const auto *body = object.if_contains("body"))
        result.body = body->is_string() ? text(*body, "a body") : json::serialize(*body);
    if (const auto *bytes = object.if_contains("segment_bytes"))
        result.segmentBytes = number<std::size_t>(*bytes, "segment_bytes");
    if (const auto *end = object.if_contains("line_end"))
        result.lineEnd = text(*end, "line_end");
    return result;
}

} // namespace

ScriptedTurn ScriptedTurn::saying(std::vector<std::string> pieces)
{
    ScriptedTurn result;
    for (std::string &piece : pieces)
        result.steps.push_back(step::Text{std::move(piece)});
    return result;
}

ScriptedTurn ScriptedTurn::calling(std::vector<ScriptedCall> calls)
{
    ScriptedTurn result;
    for (ScriptedCall &each : calls)
        result.steps.push_back(step::Call{std::move(each)});
    return result;
}

ScriptedTurn ScriptedTurn::failing(int status, std::string body,
                                   std::vector<std::pair<std::string, std::string>> headers)
{
    ScriptedTurn result;
    result.status = status;
    result.body = std::move(body);
    result.headers = std::move(headers);
    return result;
}

ModelScript ModelScript::fromJson(std::string_view source)
{
    const json::value parsed = json::parse(source);
    const auto &object =
        objectWithKeys(parsed, "the script",
                       {"turns", "afterwards", "title", "rules", "routes", "ollama_version", "models"});
    ModelScript script;
    if (const auto *turns = object.if_contains("turns"))
        for (const json::value &element : turns->as_array())
            script.turns.push_back(turn(element));
    if (const auto *afterwards = object.if_contains("afterwards"))
        script.afterwards = turn(*afterwards);
    if (const auto *title = object.if_contains("title"))
        script.title = text(*title, "title");
    if (const auto *rules = object.if_contains("rules")) {
        for (const json::value &element : rules->as_array()) {
            const auto &rule =
                objectWithKeys(element, "a rule", {"system_begins", "last_message_contains", "turn"});
            ScriptRule result;
            if (const auto *begins = rule.if_contains("system_begins"))
                result.systemBegins = text(*begins, "system_begins");
            if (const auto *contains = rule.if_contains("last_message_contains"))
                result.lastMessageContains = text(*contains, "last_message_contains");
            result.turn = turn(rule.at("turn"));
            script.rules.push_back(std::move(result));
        }
    }
    if (const auto *routes = object.if_contains("routes"))
        for (const auto &route : routes->as_object())
            script.routes.emplace_back(route.key(), turn(route.value()));
    if (const auto *version = object.if_contains("ollama_version"))
        script.ollamaVersion = text(*version, "ollama_version");
    if (const auto *models = object.if_contains("models"))
        script.models = texts(*models, "models");
    return script;
}

} // namespace morvane
