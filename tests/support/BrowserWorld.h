#pragma once

#include "app/AppModel.h"
#include "browser/history/BookmarkStore.h"
#include "browser/history/HistoryStore.h"
#include "browser/sites/BrowserSites.h"
#include "browser/sites/Favicons.h"
#include "browser/sites/StartPage.h"
#include "browser/tabs/BrowserManager.h"
#include "browser/window/BrowserWindowView.h"
#include "browser/window/BrowsingRecords.h"
#include "support/FakeSurroundings.h"
#include "support/FakeWebPage.h"
#include "support/FakeWindowRaiser.h"

namespace morvane {

/// A browser without an engine around an application model: its stores are real, its sites have the icons
/// that a test gives them.
struct BrowserWorld {
    /// All of them outlive the world, and `scheduler` is shut down before it goes.
    BrowserWorld(Scheduler &theScheduler, FakeSurroundings &surroundings, AppModel &theModel,
                 const QString &folder)
        : scheduler(theScheduler), around(surroundings), model(theModel),
          history(folder, [this] { return now; }), bookmarks(folder)
    {
    }

    /// The window, made by the manager.
    BrowserWindowView &openWindow()
    {
        manager.makeWindowIfNeeded();
        return *static_cast<BrowserWindowView *>(manager.window());
    }
    FakeWebPage &page() { return static_cast<FakeWebPage &>(manager.activeTab()->webView()); }
    /// A page of this address in the active tab.
    void load(const QString &address, const QString &title)
    {
        page().load(QUrl(address));
        page().finish(title);
    }

    Scheduler &scheduler;
    FakeSurroundings &around;
    AppModel &model;
    double now = 8e8;
    FakeWebPageFactory pages;
    HistoryStore history;
    BookmarkStore bookmarks;
    QHash<QString, QColor> icons; ///< By host.
    Favicons favicons{[this](HttpRequest request, qint64) { return iconOf(request.url.host()); },
                      [](QByteArray bytes) { return iconFrom(bytes); }};
    BrowsingRecords records{history, bookmarks, favicons, pages, around.announcer};
    FakeWindowRaiser raiser;
    int mainWindowShown = 0;
    BrowserManager manager{
        {.scheduler = scheduler,
         .announcer = around.announcer,
         .pages = pages,
         .startPage = startPage(BrowserSites()),
         .recordHistory = [this](const QString &url, const QString &title) { history.record(url, title); },
         .fetchFavicon = [this](QString host,
                                QPointer<WebPage> page) { return favicons.fetchFavicon(host, page); },
         .makeWindow =
             [this](BrowserManager &browser) {
                 return std::make_unique<BrowserWindowView>(
                     browser, BrowserWindowServices{
                                  .scheduler = scheduler,
                                  .announcer = around.announcer,
                                  .records = records,
                                  .conversation = model,
                                  .updates = model.updates(),
                                  .attachments = around.attachments,
                                  .urls = around.urls,
                                  .raiser = raiser,
                                  .showMainWindow = [this] { ++mainWindowShown; },
                                  .documentation = QStringLiteral("/share/help/index.html"),
                              });
             }}};

private:
    Task<FetchResult> iconOf(QString host)
    {
        FetchResult result;
        result.status = icons.contains(host) ? 200 : 404;
        result.body = icons.value(host).name().toLatin1();
        co_return result;
    }
    static Task<QImage> iconFrom(QByteArray bytes)
    {
        QImage image(16, 16, QImage::Format_RGB32);
        image.fill(QColor(QString::fromLatin1(bytes)));
        co_return image;
    }
};

} // namespace morvane
