#include "providers/StreamChunk.h"

#include "base/Json.h"
#include "providers/AIServiceError.h"

#include <algorithm>

namespace morvane {

namespace json = boost::json;

std::optional<QByteArrayView> StreamChunk::payload(QByteArrayView line)
{
    constexpr QByteArrayView prefix("data: ");
    if (!line.startsWith(prefix))
        return std::nullopt;
    return line.sliced(prefix.size());
}

const json::object *StreamChunk::parse(QByteArrayView payload)
{
    m_value.reset();
    m_memory.release();
    auto parsed = parseJson(payload, &m_memory);
    if (!parsed)
        return nullptr;
    m_value.emplace(std::move(*parsed));
    return m_value->if_object();
}

void StreamChunk::throwIfError(const json::object &chunk, const QString &unknown)
{
    if (const auto *error = objectMember(chunk, "error"))
        throw AIServiceError(AIServiceError::Api{stringMember(*error, "message").value_or(unknown)});
}

const json::array *StreamChunk::objects(const json::object &object, std::string_view key)
{
    const json::array *array = arrayMember(object, key);
    const auto isObject = [](const json::value &element) { return element.is_object(); };
    return array && std::ranges::all_of(*array, isObject) ? array : nullptr;
}

} // namespace morvane
