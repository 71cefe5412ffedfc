#include "providers/OpenAIStreamParser.h"

#include "base/Json.h"
#include "providers/AIServiceError.h"
#include "providers/EmptyResponse.h"

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

namespace json = boost::json;

QByteArrayView withoutBlanks(QByteArrayView text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

/// The string under a key; null if it is missing, empty or of another type.
const json::string *nonEmptyString(const json::object &object, std::string_view key)
{
    const json::value *value = object.if_contains(key);
    const json::string *string = value ? value->if_string() : nullptr;
    return string && !string->empty() ? string : nullptr;
}

} // namespace

StreamParser::Progress OpenAIStreamParser::feed(QByteArrayView line, QStringList &pieces)
{
    const auto payload = StreamChunk::payload(line);
    if (!payload)
        return Progress::goesOn;
    const QByteArrayView data = withoutBlanks(*payload);
    if (data == QByteArrayView("[DONE]"))
        return Progress::ended;
    const json::object *chunk = m_chunk.parse(data);
    if (!chunk)
        return Progress::goesOn;
    StreamChunk::throwIfError(*chunk, u"Unknown provider error."_s);

    const json::array *choices = StreamChunk::objects(*chunk, "choices");
    if (!choices || choices->empty())
        return Progress::goesOn;
    const json::object &choice = choices->front().get_object();
    const json::object *delta = objectMember(choice, "delta");
    if (!delta)
        return Progress::goesOn;
    if (const json::string *reason = nonEmptyString(choice, "finish_reason"))
        m_finishReason = *reason;
    if (const json::string *content = nonEmptyString(*delta, "content")) {
        if (QString piece = m_text.add(*content); !piece.isEmpty())
            pieces.append(std::move(piece));
    }
    if (const json::array *calls = StreamChunk::objects(*delta, "tool_calls"))
        takeCalls(*calls);
    return Progress::goesOn;
}

void OpenAIStreamParser::takeCalls(const json::array &elements)
{
    for (const json::value &value : elements) {
        const json::object &element = value.get_object();
        PendingCall &call = m_pendingCalls[integerMember(element, "index").value_or(0)];
        if (auto id = stringMember(element, "id"))
            call.id = std::move(*id);
        const json::object *function = objectMember(element, "function");
        if (!function)
            continue;
        // Some servers split even the name.
        if (const json::string *name = nonEmptyString(*function, "name"))
            call.name.add(*name);
        if (const json::string *arguments = nonEmptyString(*function, "arguments"))
            call.arguments.add(*arguments);
    }
}

void OpenAIStreamParser::end(QStringList &pieces)
{
    if (QString rest = m_text.end(); !rest.isEmpty())
        pieces.append(std::move(rest));
}

AITurnResult OpenAIStreamParser::finish()
{
    // A truncated turn is never passed on, not even when its calls look complete.
    if (m_finishReason == "length")
        throw AIServiceError(AIServiceError::Api{
            u"The response was cut off because it reached the maximum token limit. Increase "
            "Max tokens in Settings and try again."_s});
    if (m_finishReason == "content_filter")
        throw AIServiceError(AIServiceError::Blocked{});

    AITurnResult result;
    result.text = m_text.text();
    for (auto &[index, call] : m_pendingCalls) {
        call.name.end();
        call.arguments.end();
        if (call.name.text().isEmpty())
            continue;
        json::object arguments;
        if (!call.arguments.text().isEmpty()) {
            auto parsed = parseJsonObject(call.arguments.text().toUtf8());
            if (!parsed)
                throw AIServiceError(
                    AIServiceError::Api{u"The AI provider returned a malformed tool call for "_s +
                                        call.name.text() + u". Please try again."_s});
            arguments = std::move(*parsed);
        }
        result.toolCalls.append(
            AIToolCall{call.name.text(), std::move(arguments), std::move(call.id), std::nullopt});
    }
    throwIfEmpty(result);
    return result;
}

} // namespace morvane
