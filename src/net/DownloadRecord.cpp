#include "net/DownloadRecord.h"

#include "base/Json.h"
#include "net/HttpHeaders.h"

#include <QList>

namespace morvane {

namespace {

/// Digits only, as the headers have them.
std::optional<qint64> number(const QByteArray &text)
{
    constexpr qsizetype mostDigits = 18;
    if (text.isEmpty() || text.size() > mostDigits)
        return std::nullopt;
    for (const char digit : text)
        if (digit < '0' || digit > '9')
            return std::nullopt;
    return text.toLongLong();
}

} // namespace

QByteArray DownloadRecord::toJson() const
{
    boost::json::object object;
    object["url"] = jsonFromText(url);
    object["validator"] = jsonFromText(QString::fromLatin1(validator));
    if (total)
        object["total"] = *total;
    return serializeJson(object);
}

std::optional<DownloadRecord> DownloadRecord::fromJson(const QByteArray &json)
{
    const auto object = parseJsonObject(json);
    if (!object)
        return std::nullopt;
    const auto url = stringMember(*object, "url");
    const auto validator = stringMember(*object, "validator");
    if (!url || !validator || validator->isEmpty())
        return std::nullopt;
    DownloadRecord record{*url, validator->toLatin1(), std::nullopt};
    if (const boost::json::value *total = object->if_contains("total")) {
        if (!total->is_int64() || total->get_int64() <= 0)
            return std::nullopt;
        record.total = total->get_int64();
    }
    return record;
}

QByteArray validatorIn(const HttpHeaders &headers)
{
    QByteArray tag = headers.value("ETag").value_or(QByteArray()).trimmed();
    if (tag.size() > 2 && tag.startsWith('"') && tag.endsWith('"'))
        return tag;
    return headers.value("Last-Modified").value_or(QByteArray()).trimmed();
}

std::optional<ContentRange> ContentRange::parse(const QByteArray &value)
{
    const QByteArray text = value.trimmed();
    constexpr QByteArrayView unit("bytes ");
    if (!text.startsWith(unit))
        return std::nullopt;
    const QList<QByteArray> parts = text.sliced(unit.size()).split('/');
    if (parts.size() != 2)
        return std::nullopt;
    const QList<QByteArray> ends = parts.first().split('-');
    if (ends.size() != 2)
        return std::nullopt;
    const auto first = number(ends.first());
    const auto last = number(ends.last());
    const auto total = number(parts.last());
    if (!first || !last || !total || *first > *last || *last + 1 != *total)
        return std::nullopt;
    return ContentRange{*first, *total};
}

} // namespace morvane
