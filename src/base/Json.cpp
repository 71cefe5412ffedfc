#include "base/Json.h"

#include "base/JsonInPlace.h"
#include "base/JsonNumber.h"

#include <boost/json/basic_parser_impl.hpp>
#include <cstring>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

namespace json = boost::json;

/// Builds a value from the parser's events. The library's own builder does the same, but takes the parser's
/// doubles, which are off in the last digits for some three numbers in ten of full length.
class ValueBuilder {
public:
    static constexpr std::size_t max_object_size = json::object::max_size();
    static constexpr std::size_t max_array_size = json::array::max_size();
    static constexpr std::size_t max_key_size = json::string::max_size();
    static constexpr std::size_t max_string_size = json::string::max_size();

    /// `room` is null, or where the text begins that is parsed, which may be overwritten.
    void reset(json::storage_ptr storage, char *room)
    {
        m_stack.reset(std::move(storage));
        m_room = room;
    }
    json::value release() { return m_stack.release(); }

    bool on_document_begin(json::error_code &) { return true; }
    bool on_document_end(json::error_code &) { return true; }
    bool on_object_begin(json::error_code &) { return true; }
    bool on_object_end(std::size_t count, json::error_code &)
    {
        m_stack.push_object(count);
        return true;
    }
    bool on_array_begin(json::error_code &) { return true; }
    bool on_array_end(std::size_t count, json::error_code &)
    {
        m_stack.push_array(count);
        return true;
    }
    bool on_key_part(std::string_view part, std::size_t, json::error_code &)
    {
        m_stack.push_chars(part);
        return true;
    }
    bool on_key(std::string_view part, std::size_t, json::error_code &)
    {
        m_stack.push_key(part);
        return true;
    }
    bool on_string_part(std::string_view part, std::size_t, json::error_code &)
    {
        // A string is never longer than what was read of the text to tell it.
        if (m_room)
            std::memmove(m_room + m_size, part.data(), part.size());
        else
            m_text.append(part.data(), qsizetype(part.size()));
        m_size += part.size();
        return true;
    }
    bool on_string(std::string_view part, std::size_t size, json::error_code &error)
    {
        if (m_size == 0) {
            m_stack.push_string(part);
            return true;
        }
        on_string_part(part, size, error);
        m_stack.push_string({m_room ? m_room : m_text.constData(), m_size});
        m_text.clear();
        m_size = 0;
        return true;
    }
    bool on_number_part(std::string_view part, json::error_code &)
    {
        m_number.append(part);
        return true;
    }
    bool on_int64(std::int64_t number, std::string_view, json::error_code &)
    {
        m_number.clear();
        m_stack.push_int64(number);
        return true;
    }
    bool on_uint64(std::uint64_t number, std::string_view, json::error_code &)
    {
        m_number.clear();
        m_stack.push_uint64(number);
        return true;
    }
    bool on_double(double approximation, std::string_view part, json::error_code &error)
    {
        const std::optional<double> number = exactJsonDouble(m_number, part, approximation);
        m_number.clear();
        if (!number) {
            error = json::error::exponent_overflow;
            return false;
        }
        m_stack.push_double(*number);
        return true;
    }
    bool on_bool(bool value, json::error_code &)
    {
        m_stack.push_bool(value);
        return true;
    }
    bool on_null(json::error_code &)
    {
        m_stack.push_null();
        return true;
    }
    bool on_comment_part(std::string_view, json::error_code &) { return true; }
    bool on_comment(std::string_view, json::error_code &) { return true; }

private:
    json::value_stack m_stack;
    /// The first part of a text that the parser delivered in pieces. Grows in place where the stack would be
    /// copied: a text may be most of what the memory holds.
    QByteArray m_text;
    char *m_room = nullptr; ///< Holds that part instead, unless it is null.
    std::size_t m_size = 0; ///< Of that part.
    std::string m_number;   ///< The first part of a number that the parser delivered in pieces.
};

QString failure(const json::error_code &error, std::size_t offset)
{
    return u"%1 at byte %2"_s.arg(QString::fromStdString(error.message())).arg(offset);
}

std::expected<json::value, QString> parsed(QByteArrayView text, json::storage_ptr storage,
                                           const json::parse_options &options, char *room = nullptr)
{
    const QByteArrayView body =
        text.startsWith(utf8ByteOrderMark) ? text.sliced(utf8ByteOrderMark.size()) : text;

    json::basic_parser<ValueBuilder> parser(options);
    parser.handler().reset(std::move(storage), room);
    json::error_code error;
    std::size_t read = parser.write_some(false, body.data(), static_cast<std::size_t>(body.size()), error);
    if (!error && read < static_cast<std::size_t>(body.size()))
        error = json::error::extra_data;
    if (error)
        return std::unexpected(failure(error, read + static_cast<std::size_t>(text.size() - body.size())));
    return parser.handler().release();
}

std::expected<json::object, QString> objectOf(std::expected<json::value, QString> value)
{
    if (!value)
        return std::unexpected(value.error());
    if (!value->is_object())
        return std::unexpected(u"not an object"_s);
    return std::move(value->get_object());
}

json::string validText(std::string_view text)
{
    return jsonFromText(textFromJson(text));
}

json::value withValidText(const json::value &value)
{
    if (const json::object *object = value.if_object())
        return morvane::withValidText(*object);
    if (const json::string *text = value.if_string())
        return validText(*text);
    const json::array *const elements = value.if_array();
    if (!elements)
        return value;
    json::array result;
    result.reserve(elements->size());
    for (const json::value &element : *elements)
        result.push_back(withValidText(element));
    return result;
}

template <class Serializable> QByteArray serialized(const Serializable &json)
{
    json::serializer serializer;
    serializer.reset(&json);
    QByteArray bytes;
    qsizetype room = 1024;
    while (!serializer.done()) {
        const qsizetype used = bytes.size();
        bytes.resize(used + room);
        const auto piece = serializer.read(bytes.data() + used, static_cast<std::size_t>(room));
        bytes.resize(used + static_cast<qsizetype>(piece.size()));
        room = bytes.size();
    }
    return bytes;
}

} // namespace

json::parse_options jsonParseOptions()
{
    json::parse_options options;
    options.max_depth = maximumJsonDepth;
    return options;
}

std::expected<json::value, QString> parseJson(QByteArrayView text, json::storage_ptr storage)
{
    return parsed(text, std::move(storage), jsonParseOptions());
}

std::expected<json::value, QString> parseJsonOfAnyBytes(QByteArrayView text, json::storage_ptr storage)
{
    json::parse_options options = jsonParseOptions();
    options.allow_invalid_utf8 = true;
    return parsed(text, std::move(storage), options);
}

std::expected<json::object, QString> parseJsonObject(QByteArrayView text)
{
    return objectOf(parseJson(text));
}

std::expected<json::object, QString> parseJsonObjectInPlace(std::span<char> text)
{
    return objectOf(parsed({text.data(), qsizetype(text.size())}, {}, jsonParseOptions(), text.data()));
}

QByteArray serializeJson(const json::value &value)
{
    return serialized(value);
}

QByteArray serializeJson(const json::object &object)
{
    return serialized(object);
}

QByteArray serializeJson(const json::array &array)
{
    return serialized(array);
}

QString textFromJson(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

json::string jsonFromText(QStringView text)
{
    const QByteArray utf8 = text.toUtf8();
    return json::string(std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

json::object withValidText(const json::object &object)
{
    json::object result;
    for (const auto &[key, value] : object)
        result.insert_or_assign(std::string_view(validText(key)), withValidText(value));
    return result;
}

std::optional<qint64> integerFromJson(const json::value &value)
{
    json::error_code error;
    const auto number = value.to_number<qint64>(error);
    return error ? std::nullopt : std::optional<qint64>(number);
}

std::optional<double> numberFromJson(const json::value &value)
{
    json::error_code error;
    const auto number = value.to_number<double>(error);
    return error ? std::nullopt : std::optional(number);
}

std::optional<QString> stringMember(const json::object &object, std::string_view key)
{
    const json::value *const value = object.if_contains(key);
    if (!value || !value->is_string())
        return std::nullopt;
    return textFromJson(value->get_string());
}

std::optional<bool> booleanMember(const json::object &object, std::string_view key)
{
    const json::value *const value = object.if_contains(key);
    return value && value->is_bool() ? std::optional(value->get_bool()) : std::nullopt;
}

std::optional<qint64> integerMember(const json::object &object, std::string_view key)
{
    const json::value *const value = object.if_contains(key);
    return value ? integerFromJson(*value) : std::nullopt;
}

std::optional<double> numberMember(const json::object &object, std::string_view key)
{
    const json::value *const value = object.if_contains(key);
    return value ? numberFromJson(*value) : std::nullopt;
}

const json::object *objectMember(const json::object &object, std::string_view key)
{
    const json::value *const value = object.if_contains(key);
    return value ? value->if_object() : nullptr;
}

const json::array *arrayMember(const json::object &object, std::string_view key)
{
    const json::value *const value = object.if_contains(key);
    return value ? value->if_array() : nullptr;
}

} // namespace morvane
