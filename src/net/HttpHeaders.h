#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <initializer_list>
#include <optional>

namespace morvane {

/// The header fields of a request or a response, in order; names compare without regard to case.
class HttpHeaders {
public:
    struct Field {
        QByteArray name;
        QByteArray value;

        bool operator==(const Field &) const = default;
    };

    HttpHeaders() = default;
    HttpHeaders(std::initializer_list<Field> fields) : m_fields(fields) {}

    /// Replaces every field of this name by one; an empty value is sent as such.
    void set(const QByteArray &name, const QByteArray &value);
    /// Adds a field beside those that exist.
    void add(const QByteArray &name, const QByteArray &value);
    void remove(QByteArrayView name);

    bool contains(QByteArrayView name) const { return find(name) != nullptr; }
    /// The first value of this name; nothing if there is no such field.
    std::optional<QByteArray> value(QByteArrayView name) const;

    const QList<Field> &fields() const { return m_fields; }

    /// Whether every field can be sent as it stands: names are tokens (RFC 9110, 5.6.2), values are free of
    /// control characters other than the tab, above all of line ends that would start another field.
    bool areWellFormed() const;

private:
    const Field *find(QByteArrayView name) const;

    QList<Field> m_fields;
};

} // namespace morvane
