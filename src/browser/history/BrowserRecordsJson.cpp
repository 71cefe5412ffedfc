#include "browser/history/BrowserRecordsJson.h"

#include "base/Json.h"
#include "base/Uuid.h"

namespace morvane {

namespace {

namespace json = boost::json;

json::object toJson(const BrowserHistoryEntry &entry)
{
    return {{"id", jsonFromText(uuidText(entry.id))}, {"title", jsonFromText(entry.title)},
            {"url", jsonFromText(entry.url)},         {"host", jsonFromText(entry.host)},
            {"visitedAt", entry.visitedAt},           {"visitCount", entry.visitCount}};
}

json::object toJson(const BrowserBookmark &bookmark)
{
    return {{"id", jsonFromText(uuidText(bookmark.id))},
            {"title", jsonFromText(bookmark.title)},
            {"url", jsonFromText(bookmark.url)}};
}

std::optional<QUuid> idMember(const json::object &object)
{
    const auto text = stringMember(object, "id");
    return text ? uuidFromText(*text) : std::nullopt;
}

std::optional<BrowserHistoryEntry> historyEntry(const json::object &object)
{
    const auto id = idMember(object);
    const auto title = stringMember(object, "title");
    const auto url = stringMember(object, "url");
    const auto host = stringMember(object, "host");
    const auto visitedAt = numberMember(object, "visitedAt");
    const auto visitCount = integerMember(object, "visitCount");
    if (!id || !title || !url || !host || !visitedAt || !visitCount)
        return std::nullopt;
    return BrowserHistoryEntry{.id = *id,
                               .title = *title,
                               .url = *url,
                               .host = *host,
                               .visitedAt = *visitedAt,
                               .visitCount = *visitCount};
}

std::optional<BrowserBookmark> bookmark(const json::object &object)
{
    const auto id = idMember(object);
    const auto title = stringMember(object, "title");
    const auto url = stringMember(object, "url");
    if (!id || !title || !url)
        return std::nullopt;
    return BrowserBookmark{.id = *id, .title = *title, .url = *url};
}

template <class Record> QByteArray arrayText(const QList<Record> &records)
{
    json::array array;
    array.reserve(static_cast<std::size_t>(records.size()));
    for (const Record &record : records)
        array.push_back(toJson(record));
    return serializeJson(array);
}

template <class Record>
std::optional<QList<Record>> recordsOf(QByteArrayView text,
                                       std::optional<Record> (*recordOf)(const json::object &))
{
    const auto value = parseJson(text);
    if (!value || !value->is_array())
        return std::nullopt;
    QList<Record> records;
    records.reserve(static_cast<qsizetype>(value->get_array().size()));
    for (const json::value &element : value->get_array()) {
        const auto record = element.is_object() ? recordOf(element.get_object()) : std::nullopt;
        if (!record)
            return std::nullopt;
        records.append(*record);
    }
    return records;
}

} // namespace

QByteArray historyToJson(const QList<BrowserHistoryEntry> &history)
{
    return arrayText(history);
}

std::optional<QList<BrowserHistoryEntry>> historyFromJson(QByteArrayView text)
{
    return recordsOf(text, historyEntry);
}

QByteArray bookmarksToJson(const QList<BrowserBookmark> &bookmarks)
{
    return arrayText(bookmarks);
}

std::optional<QList<BrowserBookmark>> bookmarksFromJson(QByteArrayView text)
{
    return recordsOf(text, bookmark);
}

} // namespace morvane
