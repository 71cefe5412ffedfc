#pragma once

#include "browser/history/BrowserBookmark.h"
#include "browser/history/StoredRecords.h"

#include <QObject>

namespace morvane {

/// What the user has marked, in the order of adding, in `browser-bookmarks.json`. Nothing here fails for the
/// user: a file that cannot be read counts as empty, and the next change writes it anew. The file is read and
/// written in the background; what is asked for before it is read is done then. Main thread.
class BookmarkStore : public QObject {
    Q_OBJECT
public:
    /// Reads the file below `folder`.
    explicit BookmarkStore(const QString &folder, QObject *parent = nullptr);
    /// Waits until all is written; tells nobody.
    ~BookmarkStore() override;

    /// Empty until the file is read.
    const QList<BrowserBookmark> &bookmarks() const { return m_records.records(); }

    /// Adds a page at the end; nothing for an empty address, or one that is marked already.
    void add(const QString &url, const QString &title);

    /// Removes one; an unknown one is no failure.
    void remove(QUuid id);

    /// Removes all, and the file.
    void clear();

Q_SIGNALS:
    void added(const BrowserBookmark &bookmark);
    void removed(const BrowserBookmark &bookmark);
    /// After each of the others, after clear, and when the file is read.
    void changed();

private:
    StoredRecords<BrowserBookmark> m_records;
};

} // namespace morvane
