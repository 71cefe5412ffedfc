#pragma once

#include "browser/history/BrowserHistoryEntry.h"
#include "browser/history/StoredRecords.h"

#include <QObject>
#include <functional>

namespace morvane {

/// What the user and the agent have visited, newest first, in `browser-history.json`. Nothing here fails for
/// the user: a file that cannot be read counts as empty, and the next visit writes it anew. The file is read
/// and written in the background; what is asked for before it is read is done then. Main thread.
class HistoryStore : public QObject {
    Q_OBJECT
public:
    /// Seconds since 2001-01-01T00:00:00Z by the computer's calendar.
    using WallClock = std::function<double()>;

    /// Reads the file below `folder`.
    explicit HistoryStore(const QString &folder, WallClock wallClock = {}, QObject *parent = nullptr);
    /// Waits until all is written; tells nobody.
    ~HistoryStore() override;

    /// Empty until the file is read.
    const QList<BrowserHistoryEntry> &entries() const { return m_records.records(); }

    /// The entries that have the query in title, address or host; all for an empty query.
    QList<BrowserHistoryEntry> search(const QString &query) const;

    /// A page has been loaded; `title` may be empty. What has no host or is not of the web leaves no trace.
    void record(const QString &url, const QString &title);

    /// Removes one entry; an unknown one is no failure.
    void remove(QUuid id);

    /// Removes all, and the file.
    void clear();

Q_SIGNALS:
    void changed();

private:
    WallClock m_now;
    StoredRecords<BrowserHistoryEntry> m_records;
};

} // namespace morvane
