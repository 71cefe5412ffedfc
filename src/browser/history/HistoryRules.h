#pragma once

#include "browser/history/BrowserHistoryEntry.h"

#include <QList>

namespace morvane {

// What becomes of a history, newest entry first, with what is visited. Times are seconds since
// 2001-01-01T00:00:00Z. Any thread.

inline constexpr qsizetype mostHistoryEntries = 2000;
inline constexpr int historyDays = 90;
/// A visit of the same address within this time is the same visit: a reload, or a redirect that bounces.
inline constexpr double sameVisitSeconds = 10;

/// Longer addresses are not recorded: two thousand of them would be too much to keep.
inline constexpr qsizetype longestRecordedAddress = 32'768;
/// Characters of a title that are kept.
inline constexpr qsizetype longestRecordedTitle = 1'000;

/// Puts a visit in front, or counts it with the newest entry of the same address, and prunes. False for an
/// address that is not recorded: one without a host or of another scheme than http and https.
bool recordVisit(QList<BrowserHistoryEntry> &history, const QString &url, const QString &title, double now);

/// Drops what is older than `historyDays` days of the user's calendar, and what is more than
/// `mostHistoryEntries`.
void pruneHistory(QList<BrowserHistoryEntry> &history, double now);

/// The entries whose title, address or host has the query in it, in any case, in the order of the history;
/// all of them for an empty query.
QList<BrowserHistoryEntry> searchHistory(const QList<BrowserHistoryEntry> &history, const QString &query);

} // namespace morvane
