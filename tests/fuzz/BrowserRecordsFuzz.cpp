#include "browser/history/BrowserRecordsJson.h"
#include "browser/history/HistoryRules.h"

#include <QUrl>
#include <cstdlib>

/// What is read of a damaged file survives being written and read again, and can be searched, pruned and
/// added to.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size)
{
    using namespace morvane;
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    if (const auto bookmarks = bookmarksFromJson(bytes);
        bookmarks && bookmarksFromJson(bookmarksToJson(*bookmarks)) != bookmarks)
        std::abort();

    const auto read = historyFromJson(bytes);
    if (!read)
        return 0;
    if (historyFromJson(historyToJson(*read)) != read)
        std::abort();
    const double now = read->isEmpty() ? 0 : read->first().visitedAt;
    QList<BrowserHistoryEntry> history = *read;
    pruneHistory(history, now);
    for (const BrowserHistoryEntry &entry : *read) {
        if (!searchHistory(*read, entry.title).contains(entry))
            std::abort();
        if (recordVisit(history, entry.url, entry.title, now) &&
            (history.isEmpty() || history.first().url != entry.url))
            std::abort();
    }
    if (history.size() > mostHistoryEntries)
        std::abort();
    return 0;
}
