#pragma once

#include "async/Task.h"
#include "browser/tabs/Allowance.h"
#include "browser/tabs/BrowserTab.h"
#include "browser/tabs/BrowserWindow.h"
#include "browser/tabs/Downloads.h"
#include "browser/tabs/PageOperations.h"
#include "browser/tabs/PermissionQuestions.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <functional>
#include <memory>
#include <vector>

namespace morvane {

class Announcer;
class BrowserManager;
class Scheduler;
class WebPageFactory;

/// What the browser works with. All of it outlives the manager.
struct BrowserServices {
    Scheduler &scheduler;
    Announcer &announcer;
    WebPageFactory &pages;
    QString startPage; ///< HTML, with "Start Page" as its title.
    /// Called at the end of each load.
    std::function<void(const QString &urlString, const QString &title)> recordHistory;
    /// The icon of the page's site, or a null image. The page may go meanwhile.
    std::function<Task<QImage>(QString host, QPointer<WebPage> page)> fetchFavicon;
    /// Null where there can be no window.
    std::function<std::unique_ptr<BrowserWindow>(BrowserManager &manager)> makeWindow;
};

/// The controller of the browser that the user and the agent share: its window, its tabs, and what their
/// pages say. The scheduler is shut down before the manager goes. Main thread.
class BrowserManager : public QObject {
    Q_OBJECT
public:
    static constexpr double smallestZoom = 0.25;
    static constexpr double largestZoom = 3.0;
    static constexpr qsizetype mostClosedTabs = 20;

    explicit BrowserManager(BrowserServices services);
    ~BrowserManager() override;

    /// In the order of the tab bar. A tab lives until it is closed.
    const std::vector<std::unique_ptr<BrowserTab>> &tabs() const { return m_tabs; }
    /// Null before the first tab.
    QUuid activeTabID() const { return m_activeTabID; }
    BrowserTab *activeTab() const;
    /// The tab of a page, or null.
    BrowserTab *tabFor(const WebPage *page) const;
    // Those of the active tab:
    QString currentURLString() const { return m_currentURLString; }
    bool canGoBack() const { return m_canGoBack; }
    bool canGoForward() const { return m_canGoForward; }
    /// The last one closed at the end.
    const QStringList &closedTabURLs() const { return m_closedTabURLs; }
    Downloads &downloads() { return m_downloads; }
    PageOperations &operations() { return m_operations; }
    /// Somebody has given an address: what was refused before may be asked for again.
    void forgetRefusals();

    /// Null while it is closed.
    BrowserWindow *window() const { return m_window.get(); }
    void makeWindowIfNeeded();
    /// The user has closed the window; it is destroyed in a later turn. The tabs stay, with their pages.
    void windowClosed();

    void newTab();
    void switchTab(QUuid id);
    void closeTab(QUuid id);
    /// Puts a tab to another place of the tab bar; both are indices of `tabs`.
    void moveTab(qsizetype from, qsizetype to);
    /// Loads the last closed address in the active tab.
    void reopenClosedTab();
    void setZoom(double zoom);
    void shareCurrentPage();

Q_SIGNALS:
    void tabInserted(qsizetype index);
    void tabRemoved(qsizetype index);
    void tabMoved(qsizetype from, qsizetype to);
    void activeTabChanged();
    /// Address, back or forward of the active tab.
    void toolbarStateChanged();

private:
    qsizetype indexOf(QUuid id) const;
    void appendTab();
    void activate(QUuid id);
    void announceLoad(const QString &text);
    void syncToolbarState();
    void listenTo(BrowserTab &tab);
    void followPage(BrowserTab &tab);
    void updateTabState(BrowserTab &tab);
    void navigationStarted(BrowserTab &tab, const QUrl &address);
    void committed(BrowserTab &tab);
    void finished(BrowserTab &tab);
    void failed(BrowserTab &tab, const PageFailure &failure);
    static Task<void> keepFavicon(QPointer<BrowserTab> tab, QString host, Task<QImage> fetched);

    BrowserServices m_services;
    std::vector<std::unique_ptr<BrowserTab>> m_tabs;
    QUuid m_activeTabID;
    QString m_currentURLString;
    bool m_canGoBack = false;
    bool m_canGoForward = false;
    QStringList m_closedTabURLs;
    Allowance m_loadsHeard;
    Downloads m_downloads;
    PermissionQuestions m_permissions;
    PageOperations m_operations;
    std::unique_ptr<BrowserWindow> m_window;
};

} // namespace morvane
