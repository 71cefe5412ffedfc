#include "browser/history/HistoryRules.h"

#include "base/ReferenceDate.h"
#include "base/Text.h"
#include "base/Uuid.h"

#include <QUrl>
#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

double cutOff(double now)
{
    const QDateTime today = dateTimeFromReferenceDate(now).toLocalTime();
    const QDateTime first = today.addDays(-historyDays);
    return first.isValid() ? referenceDateFromDateTime(first) : std::numeric_limits<double>::lowest();
}

} // namespace

bool recordVisit(QList<BrowserHistoryEntry> &history, const QString &url, const QString &title, double now)
{
    if (url.size() > longestRecordedAddress)
        return false;
    const QUrl address(url);
    // As it is sent: a host in letters of another script could be taken for another's.
    const QString host = address.host(QUrl::FullyEncoded);
    if (host.isEmpty() || !address.scheme().startsWith("http"_L1))
        return false;
    const QString kept = firstCharacters(title, longestRecordedTitle);
    const auto found = std::find_if(history.begin(), history.end(),
                                    [&](const BrowserHistoryEntry &entry) { return entry.url == url; });
    if (found != history.end() && now - found->visitedAt < sameVisitSeconds) {
        if (found->visitCount < std::numeric_limits<qint64>::max())
            ++found->visitCount;
        found->visitedAt = now;
        found->title = kept;
        std::rotate(history.begin(), found, found + 1);
    } else {
        history.prepend({.id = newUuid(),
                         .title = kept.isEmpty() ? host : kept,
                         .url = url,
                         .host = host,
                         .visitedAt = now,
                         .visitCount = 1});
    }
    pruneHistory(history, now);
    return true;
}

void pruneHistory(QList<BrowserHistoryEntry> &history, double now)
{
    const double oldest = cutOff(now);
    history.removeIf([oldest](const BrowserHistoryEntry &entry) { return !(entry.visitedAt >= oldest); });
    if (history.size() > mostHistoryEntries)
        history.resize(mostHistoryEntries);
}

QList<BrowserHistoryEntry> searchHistory(const QList<BrowserHistoryEntry> &history, const QString &query)
{
    if (query.isEmpty())
        return history;
    const QString wanted = query.toLower();
    QList<BrowserHistoryEntry> found;
    for (const BrowserHistoryEntry &entry : history)
        if (entry.title.toLower().contains(wanted) || entry.url.toLower().contains(wanted) ||
            entry.host.toLower().contains(wanted))
            found.append(entry);
    return found;
}

} // namespace morvane
