#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>
#include <boost/json.hpp>
#include <expected>
#include <optional>
#include <string_view>

namespace morvane {

/// How deep arrays and objects may nest in a text that is read: enough for every honest peer, too little to
/// exhaust a thread's stack when the value is copied or destroyed.
inline constexpr std::size_t maximumJsonDepth = 512;

/// What may stand in front of a JSON text in a file and is passed over.
inline constexpr QByteArrayView utf8ByteOrderMark("\xEF\xBB\xBF", 3);

/// What every reader of JSON here accepts, but for parseJsonOfAnyBytes: RFC 8259, valid UTF-8,
/// `maximumJsonDepth`.
boost::json::parse_options jsonParseOptions();

/// The value of a JSON text, behind an optional byte order mark. Keeps the order of keys; of two equal keys
/// the last one wins; a double is the nearest one to its text. Fails with a reason ("syntax error at byte 7")
/// for anything that is not exactly one JSON value or holds a number beyond the range of doubles. The value
/// allocates from `storage`. Any thread.
std::expected<boost::json::value, QString> parseJson(QByteArrayView text,
                                                     boost::json::storage_ptr storage = {});

/// As parseJson, but texts may hold bytes that are no UTF-8; they are kept as they stand.
std::expected<boost::json::value, QString> parseJsonOfAnyBytes(QByteArrayView text,
                                                               boost::json::storage_ptr storage = {});

/// As parseJson, and fails for anything but an object.
std::expected<boost::json::object, QString> parseJsonObject(QByteArrayView text);

/// The value as compact UTF-8 JSON. Doubles are written with an exponent ("7E-1") and read back exactly.
QByteArray serializeJson(const boost::json::value &value);
QByteArray serializeJson(const boost::json::object &object);
QByteArray serializeJson(const boost::json::array &array);

/// Text of a JSON string, or of any UTF-8; what is none becomes U+FFFD.
QString textFromJson(std::string_view utf8);

/// The object with U+FFFD for what is no UTF-8 in its keys and texts (see parseJsonOfAnyBytes).
boost::json::object withValidText(const boost::json::object &object);

/// A JSON string of a text; a surrogate without its partner becomes "?".
boost::json::string jsonFromText(QStringView text);

/// The number if it is integral and fits, whether it was written as 5 or as 5.0; nothing otherwise.
std::optional<qint64> integerFromJson(const boost::json::value &value);

/// The number as a double; nothing for anything that is not a number.
std::optional<double> numberFromJson(const boost::json::value &value);

// Readers of one member: nothing (or null) if the key is absent or its value has another type.
std::optional<QString> stringMember(const boost::json::object &object, std::string_view key);
std::optional<bool> booleanMember(const boost::json::object &object, std::string_view key);
std::optional<qint64> integerMember(const boost::json::object &object, std::string_view key);
std::optional<double> numberMember(const boost::json::object &object, std::string_view key);
const boost::json::object *objectMember(const boost::json::object &object, std::string_view key);
const boost::json::array *arrayMember(const boost::json::object &object, std::string_view key);

} // namespace morvane
