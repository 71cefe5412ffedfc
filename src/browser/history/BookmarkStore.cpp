#include "browser/history/BookmarkStore.h"

#include "base/Text.h"
#include "base/Uuid.h"
#include "browser/history/BrowserRecordsJson.h"
#include "browser/history/HistoryRules.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

BookmarkStore::BookmarkStore(const QString &folder, QObject *parent)
    : QObject(parent), m_records(
                           folder + u"/browser-bookmarks.json"_s, {bookmarksToJson, bookmarksFromJson},
                           [](QList<BrowserBookmark> &) {}, [this] { Q_EMIT changed(); })
{
}

BookmarkStore::~BookmarkStore()
{
    blockSignals(true);
}

void BookmarkStore::add(const QString &url, const QString &title)
{
    if (url.isEmpty())
        return;
    m_records.change([this, url, title](QList<BrowserBookmark> &bookmarks) {
        const bool isThere =
            std::any_of(bookmarks.cbegin(), bookmarks.cend(),
                        [&url](const BrowserBookmark &bookmark) { return bookmark.url == url; });
        if (isThere)
            return false;
        bookmarks.append(
            {.id = newUuid(), .title = firstCharacters(title, longestRecordedTitle), .url = url});
        Q_EMIT added(bookmarks.last());
        return true;
    });
}

void BookmarkStore::remove(QUuid id)
{
    m_records.change([this, id](QList<BrowserBookmark> &bookmarks) {
        const auto found = std::find_if(bookmarks.cbegin(), bookmarks.cend(),
                                        [id](const BrowserBookmark &bookmark) { return bookmark.id == id; });
        if (found == bookmarks.cend())
            return false;
        const BrowserBookmark bookmark = bookmarks.takeAt(found - bookmarks.cbegin());
        Q_EMIT removed(bookmark);
        return true;
    });
}

void BookmarkStore::clear()
{
    m_records.clear();
}

} // namespace morvane
