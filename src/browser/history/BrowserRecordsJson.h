#pragma once

#include "browser/history/BrowserBookmark.h"
#include "browser/history/BrowserHistoryEntry.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <optional>

namespace morvane {

// The form of history and bookmarks on the disk: a compact JSON array of objects with the fields as keys.
// Reading gives nothing unless it is one array with every key of every record there and of the right type;
// unknown keys are passed over. Any thread.

QByteArray historyToJson(const QList<BrowserHistoryEntry> &history);
std::optional<QList<BrowserHistoryEntry>> historyFromJson(QByteArrayView text);

QByteArray bookmarksToJson(const QList<BrowserBookmark> &bookmarks);
std::optional<QList<BrowserBookmark>> bookmarksFromJson(QByteArrayView text);

} // namespace morvane
