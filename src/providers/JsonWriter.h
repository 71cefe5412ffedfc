#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringView>
#include <boost/json/object.hpp>
#include <concepts>
#include <string_view>

namespace morvane {

/// Writes compact JSON text straight into one buffer. Request bodies carry the whole conversation and images
/// of megabytes, so they are written without a tree of values in between. The caller keeps the order: a key
/// before each value of an object, as many ends as begins. Any thread.
class JsonWriter {
public:
    /// `expectedBytes`: room that is reserved at once.
    explicit JsonWriter(qsizetype expectedBytes) { m_text.reserve(expectedBytes); }

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }

    void key(std::string_view name);
    void string(QStringView text); ///< A surrogate without its partner becomes "?".
    void string(std::string_view utf8);
    void integer(qint64 value);
    void number(double value); ///< The shortest text that reads back as the same double; must be finite.
    void boolean(bool value);
    void null();
    void object(const boost::json::object &value);
    /// The string "data:{mimeType};base64,{bytes}" of a data URL, or of the bytes alone.
    void dataURL(QStringView mimeType, const QByteArray &bytes);
    void base64(const QByteArray &bytes);

    // A member: key and value.
    void member(std::string_view name, QStringView text)
    {
        key(name);
        string(text);
    }
    void member(std::string_view name, std::string_view utf8)
    {
        key(name);
        string(utf8);
    }
    void member(std::string_view name, const char *utf8) { member(name, std::string_view(utf8)); }
    void member(std::string_view name, std::same_as<bool> auto value)
    {
        key(name);
        boolean(value);
    }

    QByteArray take() { return std::move(m_text); }

private:
    void begin(char bracket);
    void end(char bracket);
    void separate();
    void appendEscaped(QByteArrayView utf8);
    void appendBase64(const QByteArray &bytes);

    QByteArray m_text;
    bool m_needsComma = false;
};

} // namespace morvane
