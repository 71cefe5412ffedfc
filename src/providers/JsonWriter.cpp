#include "providers/JsonWriter.h"

#include "base/Json.h"

#include <array>
#include <charconv>

namespace morvane {
namespace {

/// Bytes that must not stand as they are in a JSON string (RFC 8259, section 7).
constexpr std::array<bool, 256> needsEscape = [] {
    std::array<bool, 256> table{};
    for (std::size_t byte = 0; byte < 0x20; ++byte)
        table[byte] = true;
    table['"'] = true;
    table['\\'] = true;
    return table;
}();

void appendEscape(QByteArray &text, unsigned char byte)
{
    switch (byte) {
    case '\n':
        text.append("\\n", 2);
        return;
    case '\t':
        text.append("\\t", 2);
        return;
    case '\r':
        text.append("\\r", 2);
        return;
    case '"':
    case '\\':
        text.append('\\').append(static_cast<char>(byte));
        return;
    default:
        constexpr const char *digits = "0123456789abcdef";
        text.append("\\u00", 4).append(digits[byte >> 4]).append(digits[byte & 15]);
    }
}

} // namespace

void JsonWriter::separate()
{
    if (m_needsComma)
        m_text.append(',');
    m_needsComma = true;
}

void JsonWriter::begin(char bracket)
{
    separate();
    m_text.append(bracket);
    m_needsComma = false;
}

void JsonWriter::end(char bracket)
{
    m_text.append(bracket);
    m_needsComma = true;
}

void JsonWriter::key(std::string_view name)
{
    string(name);
    m_text.append(':');
    m_needsComma = false;
}

void JsonWriter::string(QStringView text)
{
    const QByteArray utf8 = text.toUtf8();
    string(std::string_view(utf8.data(), static_cast<std::size_t>(utf8.size())));
}

void JsonWriter::string(std::string_view utf8)
{
    separate();
    m_text.append('"');
    appendEscaped(utf8);
    m_text.append('"');
}

void JsonWriter::appendEscaped(QByteArrayView utf8)
{
    qsizetype plainFrom = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (!needsEscape[byte])
            continue;
        m_text.append(utf8.sliced(plainFrom, i - plainFrom));
        appendEscape(m_text, byte);
        plainFrom = i + 1;
    }
    m_text.append(utf8.sliced(plainFrom));
}

void JsonWriter::integer(qint64 value)
{
    separate();
    m_text.append(QByteArray::number(value));
}

void JsonWriter::number(double value)
{
    separate();
    char digits[32];
    const auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
    m_text.append(digits, end - digits);
}

void JsonWriter::boolean(bool value)
{
    separate();
    m_text.append(value ? "true" : "false");
}

void JsonWriter::null()
{
    separate();
    m_text.append("null");
}

void JsonWriter::object(const boost::json::object &value)
{
    separate();
    m_text.append(serializeJson(value));
}

void JsonWriter::dataURL(QStringView mimeType, const QByteArray &bytes)
{
    separate();
    m_text.append("\"data:");
    appendEscaped(mimeType.toUtf8());
    m_text.append(";base64,");
    appendBase64(bytes);
    m_text.append('"');
}

void JsonWriter::base64(const QByteArray &bytes)
{
    separate();
    m_text.append('"');
    appendBase64(bytes);
    m_text.append('"');
}

void JsonWriter::appendBase64(const QByteArray &bytes)
{
    // In pieces, so that no second copy of a whole image is made; a multiple of three needs no padding.
    constexpr qsizetype piece = 48 * 1024;
    for (qsizetype from = 0; from < bytes.size(); from += piece) {
        const qsizetype size = std::min(piece, bytes.size() - from);
        m_text.append(QByteArray::fromRawData(bytes.constData() + from, size).toBase64());
    }
}

} // namespace morvane
