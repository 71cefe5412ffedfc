#include "net/HttpHeaders.h"

#include <algorithm>

namespace morvane {

namespace {

bool isTokenCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
}

bool isValueCharacter(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return c == '\t' || (byte >= 0x20 && byte != 0x7f);
}

bool isWellFormed(const HttpHeaders::Field &field)
{
    return !field.name.isEmpty() && std::all_of(field.name.begin(), field.name.end(), isTokenCharacter) &&
           std::all_of(field.value.begin(), field.value.end(), isValueCharacter);
}

bool isNamed(const HttpHeaders::Field &field, QByteArrayView name)
{
    return field.name.compare(name, Qt::CaseInsensitive) == 0;
}

} // namespace

void HttpHeaders::set(const QByteArray &name, const QByteArray &value)
{
    remove(name);
    add(name, value);
}

void HttpHeaders::add(const QByteArray &name, const QByteArray &value)
{
    m_fields.append({name, value});
}

void HttpHeaders::remove(QByteArrayView name)
{
    m_fields.removeIf([name](const Field &field) { return isNamed(field, name); });
}

std::optional<QByteArray> HttpHeaders::value(QByteArrayView name) const
{
    if (const Field *field = find(name))
        return field->value;
    return std::nullopt;
}

bool HttpHeaders::areWellFormed() const
{
    return std::all_of(m_fields.begin(), m_fields.end(), isWellFormed);
}

const HttpHeaders::Field *HttpHeaders::find(QByteArrayView name) const
{
    const auto found = std::find_if(m_fields.begin(), m_fields.end(),
                                    [name](const Field &field) { return isNamed(field, name); });
    return found == m_fields.end() ? nullptr : &*found;
}

} // namespace morvane
