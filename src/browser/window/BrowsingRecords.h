#pragma once

#include "browser/history/BookmarkStore.h"
#include "browser/history/HistoryStore.h"

#include <QImage>
#include <QObject>

namespace morvane {

class Announcer;
class BrowserManager;
class Favicons;
class WebPageFactory;

/// What the user does with history and bookmarks, and says aloud what became of it. Main thread.
class BrowsingRecords : public QObject {
    Q_OBJECT
public:
    /// All of them outlive the object.
    BrowsingRecords(HistoryStore &history, BookmarkStore &bookmarks, const Favicons &favicons,
                    WebPageFactory &pages, Announcer &announcer, QObject *parent = nullptr);

    HistoryStore &history() const { return m_history; }
    const QList<BrowserBookmark> &bookmarks() const { return m_bookmarks.bookmarks(); }

    /// Marks the page of the active tab; nothing on a page without an address, or one that is marked.
    void addBookmarkForActiveTab(const BrowserManager &manager);
    /// An unknown one is no failure.
    void removeBookmark(QUuid id);
    /// Without the network: null for a site that was not visited in this run.
    QImage bookmarkFavicon(const BrowserBookmark &bookmark) const;
    /// The same for a host.
    QImage favicon(const QString &host) const;

    void clearHistory();
    /// The history, the bookmarks, and all that sites have stored. Open tabs stay.
    void clearBrowsingData();

Q_SIGNALS:
    void bookmarksChanged();

private:
    HistoryStore &m_history;
    BookmarkStore &m_bookmarks;
    const Favicons &m_favicons;
    WebPageFactory &m_pages;
    Announcer &m_announcer;
};

} // namespace morvane
