#include "browser/history/HistoryStore.h"

#include "base/ReferenceDate.h"
#include "browser/history/BrowserRecordsJson.h"
#include "browser/history/HistoryRules.h"

using namespace Qt::StringLiterals;

namespace morvane {

HistoryStore::HistoryStore(const QString &folder, WallClock wallClock, QObject *parent)
    : QObject(parent), m_now(wallClock ? std::move(wallClock) : referenceDateNow),
      m_records(
          folder + u"/browser-history.json"_s, {historyToJson, historyFromJson},
          [this](QList<BrowserHistoryEntry> &history) { pruneHistory(history, m_now()); },
          [this] { Q_EMIT changed(); })
{
}

HistoryStore::~HistoryStore()
{
    blockSignals(true);
}

QList<BrowserHistoryEntry> HistoryStore::search(const QString &query) const
{
    return searchHistory(entries(), query);
}

void HistoryStore::record(const QString &url, const QString &title)
{
    m_records.change([url, title, now = m_now()](QList<BrowserHistoryEntry> &history) {
        return recordVisit(history, url, title, now);
    });
}

void HistoryStore::remove(QUuid id)
{
    m_records.change([id](QList<BrowserHistoryEntry> &history) {
        return history.removeIf([id](const BrowserHistoryEntry &entry) { return entry.id == id; }) > 0;
    });
}

void HistoryStore::clear()
{
    m_records.clear();
}

} // namespace morvane
