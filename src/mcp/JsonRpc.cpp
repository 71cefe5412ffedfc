#include "mcp/JsonRpc.h"

#include "base/Json.h"
#include "base/JsonInPlace.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace json = boost::json;

namespace morvane {

namespace {

// What Unicode counts as space separators beside the tab, and as line ends, in UTF-8.
constexpr std::array<QByteArrayView, 18> blanks{" ",
                                                "\t",
                                                "\xC2\xA0",
                                                "\xE1\x9A\x80",
                                                "\xE2\x80\x80",
                                                "\xE2\x80\x81",
                                                "\xE2\x80\x82",
                                                "\xE2\x80\x83",
                                                "\xE2\x80\x84",
                                                "\xE2\x80\x85",
                                                "\xE2\x80\x86",
                                                "\xE2\x80\x87",
                                                "\xE2\x80\x88",
                                                "\xE2\x80\x89",
                                                "\xE2\x80\x8A",
                                                "\xE2\x80\xAF",
                                                "\xE2\x81\x9F",
                                                "\xE3\x80\x80"};
constexpr std::array<QByteArrayView, 7> lineEnds{"\n",       "\r",           "\v",          "\f",
                                                 "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};

enum class Trimmed { blanks, blanksAndLineEnds };

/// The length of the one character of that kind at the beginning or the end; 0 if there is none.
template <class Matches> qsizetype trimmedLength(Trimmed kind, Matches matches)
{
    for (const QByteArrayView blank : blanks)
        if (matches(blank))
            return blank.size();
    if (kind == Trimmed::blanks)
        return 0;
    for (const QByteArrayView end : lineEnds)
        if (matches(end))
            return end.size();
    return 0;
}

QByteArrayView without(QByteArrayView text, Trimmed kind)
{
    const auto atStart = [&text](QByteArrayView what) { return text.startsWith(what); };
    const auto atEnd = [&text](QByteArrayView what) { return text.endsWith(what); };
    while (const qsizetype length = trimmedLength(kind, atStart))
        text = text.sliced(length);
    while (const qsizetype length = trimmedLength(kind, atEnd))
        text.chop(length);
    return text;
}

std::optional<qint64> strictInteger(std::string_view text)
{
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-'))
            return std::nullopt;
    }
    qint64 number = 0;
    const char *const begin = text.data();
    const char *const end = begin + text.size();
    const auto [stop, error] = std::from_chars(begin, end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

} // namespace

QByteArrayView trimmedJSONText(QByteArrayView text)
{
    return without(text, Trimmed::blanksAndLineEnds);
}

QByteArrayView trimmedBlanks(QByteArrayView text)
{
    return without(text, Trimmed::blanks);
}

std::optional<json::object> parseJSONText(QByteArray whole, qsizetype from)
{
    constexpr QByteArrayView prefix = "data:";
    constexpr QByteArrayView prefixAndBlank = "data: ";
    char *const room = whole.data();
    QByteArrayView text = trimmedJSONText(QByteArrayView(whole).sliced(from));
    if (text.startsWith(prefix))
        text = trimmedBlanks(text.sliced(prefix.size()));
    if (text.startsWith(prefixAndBlank))
        text = trimmedBlanks(text.sliced(prefixAndBlank.size()));
    if (text.isEmpty())
        return std::nullopt;
    auto object = parseJsonObjectInPlace({room + (text.data() - room), std::size_t(text.size())});
    return object ? std::optional(std::move(*object)) : std::nullopt;
}

std::optional<qint64> usableID(const json::object &message)
{
    const json::value *const id = message.if_contains("id");
    if (!id)
        return std::nullopt;
    if (id->is_int64())
        return id->get_int64();
    return id->is_string() ? strictInteger(id->get_string()) : std::nullopt;
}

std::optional<qint64> answeredID(const json::object &message)
{
    return message.contains("method") ? std::nullopt : usableID(message);
}

QByteArray requestText(qint64 id, QByteArrayView method, QByteArrayView params)
{
    QByteArray text;
    text.reserve(params.size() + method.size() + 80);
    text += R"({"jsonrpc":"2.0","id":)";
    text += QByteArray::number(id);
    text += R"(,"method":")";
    text += method;
    text += R"(","params":)";
    text += params;
    text += '}';
    return text;
}

QByteArray notificationText(QByteArrayView method)
{
    return R"({"jsonrpc":"2.0","method":")" + method.toByteArray() + R"(","params":{}})";
}

json::object failureMessage(QStringView description)
{
    return {{"error", json::object{{"message", jsonFromText(description)}}}};
}

} // namespace morvane
