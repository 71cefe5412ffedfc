#include "providers/StreamChunk.h"

#include "base/Json.h"
#include "providers/AIServiceError.h"
#include "providers/Log.h"

#include <algorithm>
#include <charconv>

namespace morvane {

namespace json = boost::json;

namespace {

/// The code unit that is escaped ("\\uD83D") at a place, if it is a surrogate.
std::optional<unsigned> escapedSurrogate(QByteArrayView text, qsizetype at)
{
    constexpr qsizetype length = 6;
    if (at + length > text.size() || text[at] != '\\' || text[at + 1] != 'u')
        return std::nullopt;
    unsigned unit = 0;
    const char *const end = text.data() + at + length;
    const auto [read, error] = std::from_chars(text.data() + at + 2, end, unit, 16);
    if (error != std::errc() || read != end || unit < 0xD800 || unit > 0xDFFF)
        return std::nullopt;
    return unit;
}

/// The JSON text with three bytes for each escaped surrogate that has no partner beside it, which the JSON
/// reader would refuse.
QByteArray withoutLoneSurrogates(QByteArrayView text)
{
    constexpr unsigned firstLow = 0xDC00;
    QByteArray result;
    result.reserve(text.size());
    for (qsizetype at = 0; at < text.size();) {
        const auto unit = escapedSurrogate(text, at);
        const auto next = unit && *unit < firstLow ? escapedSurrogate(text, at + 6) : std::nullopt;
        qsizetype taken = 1;
        if (next && *next >= firstLow)
            taken = 12;
        else if (unit)
            taken = 6;
        else if (text[at] == '\\' && at + 1 < text.size())
            taken = 2; // so that the second of two backslashes begins nothing
        if (taken == 6)
            result.append(static_cast<char>(0xE0 | *unit >> 12))
                .append(static_cast<char>(0x80 | (*unit >> 6 & 0x3F)))
                .append(static_cast<char>(0x80 | (*unit & 0x3F)));
        else
            result.append(text.sliced(at, taken));
        at += taken;
    }
    return result;
}

} // namespace

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
    // A new one for each line: one that is used again asks for twice as much with each line that does not
    // fit.
    m_memory.emplace(m_buffer.data(), m_buffer.size());
    auto parsed = parseJson(payload, &*m_memory);
    m_hasBrokenText = !parsed;
    if (!parsed)
        parsed = parseJsonOfAnyBytes(withoutLoneSurrogates(payload), &*m_memory);
    if (!parsed) {
        qCInfo(providersLog) << "what is no JSON in a stream is passed over;" << payload.size() << "bytes";
        return nullptr;
    }
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
