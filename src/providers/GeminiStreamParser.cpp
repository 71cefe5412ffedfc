#include "providers/GeminiStreamParser.h"

#include "base/Json.h"
#include "providers/AIServiceError.h"
#include "providers/EmptyResponse.h"
#include "providers/SchemaTools.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace json = boost::json;

StreamParser::Progress GeminiStreamParser::feed(QByteArrayView line, QStringList &pieces)
{
    const auto payload = StreamChunk::payload(line);
    const json::object *chunk = payload ? m_chunk.parse(*payload) : nullptr;
    if (!chunk)
        return Progress::goesOn;
    StreamChunk::throwIfError(*chunk, u"Unknown Gemini error."_s);

    const json::array *candidates = StreamChunk::objects(*chunk, "candidates");
    if (!candidates || candidates->empty())
        return Progress::goesOn;
    const json::object &candidate = candidates->front().get_object();
    const json::object *content = objectMember(candidate, "content");
    const json::array *parts = content ? StreamChunk::objects(*content, "parts") : nullptr;
    if (!parts)
        return Progress::goesOn;
    if (auto reason = stringMember(candidate, "finishReason"); reason && !reason->isEmpty())
        m_finishReason = reason->toStdString();
    for (const json::value &part : *parts)
        takePart(part.get_object(), pieces);
    return Progress::goesOn;
}

void GeminiStreamParser::takePart(const json::object &part, QStringList &pieces)
{
    const json::value *const text = part.if_contains("text");
    if (text && text->is_string()) {
        pieces.append(m_text.add(text->get_string()));
        return;
    }
    const json::object *function = objectMember(part, "functionCall");
    const auto name = function ? stringMember(*function, "name") : std::nullopt;
    if (!name || name->isEmpty())
        return;
    const QString id = stringMember(*function, "id").value_or(QString());
    const QString key = id.isEmpty() ? *name : id;
    auto found = m_callByKey.constFind(key);
    if (found == m_callByKey.cend()) {
        found = m_callByKey.insert(key, m_calls.size());
        m_calls.push_back(Call{key, *name, {}, std::nullopt});
    }
    Call &call = m_calls[*found];
    if (!call.thoughtSignature)
        call.thoughtSignature = stringMember(part, "thoughtSignature");
    const json::object *const arguments = objectMember(*function, "args");
    if (arguments && m_chunk.hasBrokenText())
        deepMerge(call.arguments, withValidText(*arguments));
    else if (arguments)
        deepMerge(call.arguments, *arguments);
}

void GeminiStreamParser::end(QStringList &pieces)
{
    if (QString rest = m_text.end(); !rest.isEmpty())
        pieces.append(std::move(rest));
}

AITurnResult GeminiStreamParser::finish()
{
    if (m_finishReason == "SAFETY" || m_finishReason == "BLOCKED" || m_finishReason == "PROHIBITED_CONTENT")
        throw AIServiceError(AIServiceError::Blocked{});

    AITurnResult result;
    result.text = m_text.text();
    for (Call &call : m_calls) {
        auto id = call.key == call.name ? std::nullopt : std::optional(call.key);
        result.toolCalls.append(AIToolCall{std::move(call.name), std::move(call.arguments), std::move(id),
                                           std::move(call.thoughtSignature)});
    }
    throwIfEmpty(result);
    return result;
}

} // namespace morvane
