#include "mcp/ToolAnswers.h"

#include "base/Json.h"

#include <QStringDecoder>
#include <algorithm>
#include <array>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace json = boost::json;

namespace morvane {

namespace {

bool isArrayOfObjects(const json::value *value)
{
    return value && value->is_array() &&
           std::all_of(value->get_array().begin(), value->get_array().end(),
                       [](const json::value &element) { return element.is_object(); });
}

/// The text items of a result's content, taken out of it.
std::vector<json::string> takeTexts(json::value *content)
{
    std::vector<json::string> texts;
    if (!isArrayOfObjects(content))
        return texts;
    for (json::value &item : content->get_array()) {
        json::object &entry = item.get_object();
        const json::value *const type = entry.if_contains("type");
        json::value *const words = entry.if_contains("text");
        if (type && type->is_string() && type->get_string() == "text" && words && words->is_string())
            texts.push_back(std::move(words->get_string()));
    }
    return texts;
}

/// Makes a text of the UTF-8 in the second half of its room. That takes twice as much of it at most, so that
/// what is read is always ahead of what is written.
void widen(QString &text)
{
    std::array<char, 4096> piece{};
    std::array<QChar, piece.size() + 4> units; // with what a character that was cut before may come to
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QChar *written = text.data();
    const char *const end = reinterpret_cast<const char *>(text.constData() + text.size());
    for (const char *read = end - text.size(); read < end;) {
        const qsizetype size = std::min<qsizetype>(piece.size(), end - read);
        std::copy_n(read, size, piece.data());
        read += size;
        const QChar *const last = decoder.appendToBuffer(units.data(), QByteArrayView(piece.data(), size));
        written = std::copy_n(units.data(), last - units.data(), written);
    }
    text.truncate(written - text.constData());
    text.squeeze();
}

/// The texts behind `beginning`, one below the other. Holds none of them twice: each is given back once it
/// stands in the room of the whole.
QString joined(QByteArrayView beginning, std::vector<json::string> texts)
{
    qsizetype bytes = beginning.size() + qsizetype(texts.size()) - 1;
    for (const json::string &text : texts)
        bytes += qsizetype(text.size());
    QString whole(bytes, Qt::Uninitialized);
    char *end = std::copy(beginning.begin(), beginning.end(), reinterpret_cast<char *>(whole.data()) + bytes);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0)
            *end++ = '\n';
        end = std::copy_n(texts[i].data(), texts[i].size(), end);
        json::string().swap(texts[i]);
    }
    widen(whole);
    return whole;
}

json::object defaultSchema()
{
    return {{"type", "object"}, {"properties", json::object()}};
}

} // namespace

std::expected<json::object, MCPError> resultOf(std::optional<json::object> message)
{
    if (!message)
        return std::unexpected(MCPError(u"The MCP server did not respond in time."_s));
    if (const json::object *const error = objectMember(*message, "error"))
        return std::unexpected(
            MCPError(stringMember(*error, "message").value_or(u"the server returned an error"_s)));
    json::value *const result = message->if_contains("result");
    return result && result->is_object() ? std::move(result->get_object()) : json::object();
}

std::expected<QList<MCPTool>, MCPError> listedTools(const json::object &result)
{
    const json::value *const list = result.if_contains("tools");
    if (!isArrayOfObjects(list))
        return std::unexpected(MCPError(u"The server did not return a tool list."_s));
    QList<MCPTool> tools;
    for (const json::value &element : list->get_array()) {
        const json::object &entry = element.get_object();
        const auto name = stringMember(entry, "name");
        if (!name)
            continue;
        const json::object *const schema = objectMember(entry, "inputSchema");
        tools.append({*name, stringMember(entry, "description").value_or(QString()),
                      schema ? *schema : defaultSchema()});
    }
    return tools;
}

ToolResult toolResult(json::object result)
{
    std::vector<json::string> texts = takeTexts(result.if_contains("content"));
    const bool isEmpty = texts.empty() || (texts.size() == 1 && texts.front().empty());
    if (booleanMember(result, "isError") == true)
        return isEmpty ? u"Error: the tool reported a failure"_s : joined("Error: ", std::move(texts));
    return isEmpty ? u"(no output)"_s : joined({}, std::move(texts));
}

} // namespace morvane
