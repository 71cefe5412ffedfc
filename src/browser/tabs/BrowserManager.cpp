#include "browser/tabs/BrowserManager.h"

#include "async/Scheduler.h"
#include "browser/pages/PageText.h"
#include "browser/pages/SiteOf.h"
#include "browser/pages/WebPageFactory.h"
#include "platform/Announcer.h"

#include <QMetaObject>
#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

using namespace std::chrono_literals;

/// A page can load one page after the other without end, and a screen reader drops what comes in a flood.
constexpr int mostLoadsHeard = 20;
constexpr auto loadsHeardWithin = 10s;

QString hostOr(const QUrl &address, const QString &fallback)
{
    return siteOf(address).isEmpty() ? fallback : pageText(siteOf(address));
}

} // namespace

BrowserManager::BrowserManager(BrowserServices services)
    : m_services(std::move(services)),
      m_loadsHeard(m_services.scheduler.clock(), mostLoadsHeard, loadsHeardWithin),
      m_downloads(m_services.announcer, [this] { return window(); }),
      m_permissions(m_services.announcer, [this] { return window(); }),
      m_operations(*this, m_services.announcer)
{
}

BrowserManager::~BrowserManager()
{
    // The window shows what the tabs own, and what pages say while they end concerns nobody.
    m_window.reset();
    for (const auto &tab : m_tabs)
        tab->webView().disconnect(this);
}

BrowserTab *BrowserManager::activeTab() const
{
    const qsizetype index = indexOf(m_activeTabID);
    return index < 0 ? nullptr : m_tabs[std::size_t(index)].get();
}

BrowserTab *BrowserManager::tabFor(const WebPage *page) const
{
    const auto place = std::ranges::find(m_tabs, page, [](const auto &tab) { return &tab->webView(); });
    return place == m_tabs.end() ? nullptr : place->get();
}

qsizetype BrowserManager::indexOf(QUuid id) const
{
    const auto place = std::ranges::find(m_tabs, id, &BrowserTab::id);
    return place == m_tabs.end() ? -1 : place - m_tabs.begin();
}

void BrowserManager::makeWindowIfNeeded()
{
    if (!m_window && !m_services.makeWindow)
        return;
    if (m_tabs.empty())
        newTab();
    if (!m_window)
        m_window = m_services.makeWindow(*this);
}

void BrowserManager::windowClosed()
{
    m_downloads.windowClosed();
    m_permissions.windowClosed();
    // It is the window that says so, and it has not ended yet.
    QMetaObject::invokeMethod(
        this, [window = std::shared_ptr<BrowserWindow>(std::move(m_window))] {}, Qt::QueuedConnection);
}

void BrowserManager::forgetRefusals()
{
    m_downloads.forgetRefusals();
    m_permissions.forgetRefusals();
}

void BrowserManager::appendTab()
{
    m_tabs.push_back(std::make_unique<BrowserTab>(m_services.pages.makePage()));
    BrowserTab &tab = *m_tabs.back();
    listenTo(tab);
    Q_EMIT tabInserted(qsizetype(m_tabs.size()) - 1);
    activate(tab.id());
    tab.webView().loadHtml(m_services.startPage);
    tab.setTitle(u"Start Page"_s);
}

void BrowserManager::newTab()
{
    appendTab();
    m_services.announcer.announce(u"Opened new tab."_s);
}

void BrowserManager::activate(QUuid id)
{
    m_activeTabID = id;
    Q_EMIT activeTabChanged();
    syncToolbarState();
}

void BrowserManager::switchTab(QUuid id)
{
    if (indexOf(id) < 0)
        return;
    activate(id);
    activeTab()->setZoom(activeTab()->zoom());
    m_services.announcer.announce(u"Switched to tab "_s + pageText(activeTab()->title()));
}

void BrowserManager::closeTab(QUuid id)
{
    const qsizetype index = indexOf(id);
    if (index < 0)
        return;
    const bool wasActive = id == m_activeTabID;
    const auto place = m_tabs.begin() + index;
    const QString title = pageText((*place)->title());
    const QString address = (*place)->urlString();
    if (!address.isEmpty() && address != "about:blank"_L1) {
        m_closedTabURLs.append(address);
        if (m_closedTabURLs.size() > mostClosedTabs)
            m_closedTabURLs.removeFirst();
    }
    const std::unique_ptr<BrowserTab> closed = std::move(*place);
    closed->webView().disconnect(this);
    m_tabs.erase(place);
    Q_EMIT tabRemoved(index);
    if (m_tabs.empty()) {
        appendTab();
        m_services.announcer.announce(u"Closed tab %1. Opened new tab."_s.arg(title));
        return;
    }
    if (wasActive)
        activate(m_tabs[std::size_t(std::max<qsizetype>(index - 1, 0))]->id());
    m_services.announcer.announce(u"Closed tab %1."_s.arg(title));
}

void BrowserManager::moveTab(qsizetype from, qsizetype to)
{
    const auto count = qsizetype(m_tabs.size());
    if (from < 0 || to < 0 || from >= count || to >= count || from == to)
        return;
    const auto first = m_tabs.begin() + std::min(from, to);
    const auto last = m_tabs.begin() + std::max(from, to);
    if (from < to)
        std::rotate(first, first + 1, last + 1);
    else
        std::rotate(first, last, last + 1);
    Q_EMIT tabMoved(from, to);
}

void BrowserManager::reopenClosedTab()
{
    if (m_closedTabURLs.isEmpty()) {
        m_services.announcer.announce(u"No closed tab to reopen."_s);
        return;
    }
    const QString address = m_closedTabURLs.takeLast();
    m_services.announcer.announce(u"Reopened closed tab."_s);
    m_operations.open(address);
}

void BrowserManager::setZoom(double zoom)
{
    BrowserTab *const tab = activeTab();
    if (!tab)
        return;
    tab->setZoom(std::clamp(zoom, smallestZoom, largestZoom));
    constexpr int percent = 100;
    m_services.announcer.announce(u"Zoom %1 percent"_s.arg(int(tab->zoom() * percent)));
}

void BrowserManager::shareCurrentPage()
{
    const QUrl address(m_currentURLString);
    if (!activeTab() || !m_window || address.scheme().isEmpty()) {
        m_services.announcer.announce(u"There is no page to share yet."_s);
        return;
    }
    m_window->showSharePicker(address);
    m_services.announcer.announce(u"Share sheet opened for %1."_s.arg(hostOr(address, u"this page"_s)));
}

void BrowserManager::syncToolbarState()
{
    const BrowserTab *const tab = activeTab();
    if (!tab)
        return;
    m_currentURLString = tab->urlString();
    m_canGoBack = tab->canGoBack();
    m_canGoForward = tab->canGoForward();
    Q_EMIT toolbarStateChanged();
}

void BrowserManager::listenTo(BrowserTab &tab)
{
    const WebPage *const page = &tab.webView();
    connect(page, &WebPage::navigationStarted, this,
            [this, &tab](const QUrl &address) { navigationStarted(tab, address); });
    connect(page, &WebPage::committed, this, [this, &tab] { committed(tab); });
    connect(page, &WebPage::changed, this, [this, &tab] { followPage(tab); });
    connect(page, &WebPage::finished, this, [this, &tab] { finished(tab); });
    connect(page, &WebPage::failed, this, [this, &tab](const PageFailure &failure) { failed(tab, failure); });
    connect(page, &WebPage::newWindowRequested, this, [&tab](const QUrl &address) {
        if (!address.isEmpty())
            tab.webView().load(address);
    });
    connect(page, &WebPage::windowsRefused, this, [this, &tab] {
        if (&tab == activeTab())
            announceLoad(u"More windows of %1 are refused."_s.arg(
                RefusedSites::nameOf(siteOf(tab.webView().address()))));
    });
    connect(page, &WebPage::askedElsewhere, this,
            [this](const QString &words) { m_services.announcer.announce(words); });
    connect(page, &WebPage::downloadRequested, &m_downloads, &Downloads::add);
    connect(page, &WebPage::permissionRequested, this, [this, &tab](const auto &permission) {
        // Nobody is asked by a page that is out of sight.
        if (m_window && m_window->isVisible() && &tab == activeTab())
            m_permissions.add(permission);
        else
            permission->refuse();
    });
}

void BrowserManager::announceLoad(const QString &text)
{
    if (m_loadsHeard.take())
        m_services.announcer.announce(text);
}

void BrowserManager::followPage(BrowserTab &tab)
{
    tab.followPage();
    if (&tab == activeTab())
        syncToolbarState();
}

void BrowserManager::updateTabState(BrowserTab &tab)
{
    const QString before = m_currentURLString;
    followPage(tab);
    if (&tab == activeTab() && m_currentURLString != before && !m_currentURLString.isEmpty())
        announceLoad(u"Loaded "_s + pageText(tab.title()));
}

void BrowserManager::navigationStarted(BrowserTab &tab, const QUrl &address)
{
    tab.setLastElementRefs({});
    if (&tab == activeTab())
        announceLoad(u"Loading %1…"_s.arg(hostOr(address, u"page"_s)));
}

void BrowserManager::committed(BrowserTab &tab)
{
    // The icon is that of the site before.
    if (siteOf(tab.webView().address()) != siteOf(QUrl(tab.urlString())))
        tab.setFavicon({});
    updateTabState(tab);
    tab.setLastElementRefs({});
}

void BrowserManager::finished(BrowserTab &tab)
{
    updateTabState(tab);
    const QUrl address = tab.webView().address();
    if (!address.isEmpty() && m_services.recordHistory)
        m_services.recordHistory(tab.urlString(), tab.webView().title());
    const QString host = siteOf(address);
    if (tab.favicon().isNull() && !host.isEmpty() && m_services.fetchFavicon)
        m_services.scheduler.spawn(keepFavicon(&tab, host, m_services.fetchFavicon(host, &tab.webView())));
}

Task<void> BrowserManager::keepFavicon(QPointer<BrowserTab> tab, QString host, Task<QImage> fetched)
{
    const QImage icon = co_await std::move(fetched);
    if (tab && !icon.isNull() && siteOf(QUrl(tab->urlString())) == host)
        tab->setFavicon(icon);
}

void BrowserManager::failed(BrowserTab &tab, const PageFailure &failure)
{
    updateTabState(tab);
    if (failure.kind != PageFailure::Kind::cancelled && &tab == activeTab())
        announceLoad(u"Failed to load: "_s + failure.description);
}

} // namespace morvane
