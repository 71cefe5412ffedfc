#include "browser/window/BrowsingRecords.h"

#include "browser/pages/PageText.h"
#include "browser/pages/SiteOf.h"
#include "browser/pages/WebPageFactory.h"
#include "browser/sites/Favicons.h"
#include "browser/tabs/BrowserManager.h"
#include "platform/Announcer.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace morvane {

BrowsingRecords::BrowsingRecords(HistoryStore &history, BookmarkStore &bookmarks, const Favicons &favicons,
                                 WebPageFactory &pages, Announcer &announcer, QObject *parent)
    : QObject(parent), m_history(history), m_bookmarks(bookmarks), m_favicons(favicons), m_pages(pages),
      m_announcer(announcer)
{
    connect(&bookmarks, &BookmarkStore::changed, this, &BrowsingRecords::bookmarksChanged);
    connect(&bookmarks, &BookmarkStore::added, this, [this](const BrowserBookmark &bookmark) {
        m_announcer.announce(u"Bookmarked "_s + pageText(bookmark.title));
    });
    connect(&bookmarks, &BookmarkStore::removed, this, [this](const BrowserBookmark &bookmark) {
        m_announcer.announce(u"Removed bookmark "_s + pageText(bookmark.title));
    });
}

void BrowsingRecords::addBookmarkForActiveTab(const BrowserManager &manager)
{
    if (const BrowserTab *tab = manager.activeTab())
        m_bookmarks.add(tab->urlString(), tab->title());
}

void BrowsingRecords::removeBookmark(QUuid id)
{
    m_bookmarks.remove(id);
}

QImage BrowsingRecords::bookmarkFavicon(const BrowserBookmark &bookmark) const
{
    return favicon(siteOf(QUrl(bookmark.url)));
}

QImage BrowsingRecords::favicon(const QString &host) const
{
    return m_favicons.cached(host);
}

void BrowsingRecords::clearHistory()
{
    m_history.clear();
    m_announcer.announce(u"History cleared."_s);
}

void BrowsingRecords::clearBrowsingData()
{
    m_history.clear();
    m_pages.removeAllSiteData();
    m_bookmarks.clear();
    m_announcer.announce(u"Browsing data cleared, including history."_s);
}

} // namespace morvane
