#include "browser/window/BuiltInBrowser.h"

#include "attachments/AttachmentService.h"
#include "browser/history/BookmarkStore.h"
#include "browser/history/HistoryStore.h"
#include "browser/sites/BrowserSites.h"
#include "browser/sites/Favicons.h"
#include "browser/sites/StartPage.h"
#include "browser/tabs/BrowserManager.h"
#include "browser/window/BrowserWindowView.h"
#include "browser/window/BrowsingRecords.h"
#include "net/HttpClient.h"
#include "platform/Announcer.h"

#include <QApplication>
#include <QMessageBox>
#include <utility>

using namespace Qt::StringLiterals;

namespace morvane {

/// What is made when the browser is first used, in the order in which one needs the other.
struct BuiltInBrowser::Parts {
    Parts(const Services &services, const Surroundings &around, std::unique_ptr<WebPageFactory> pages)
        : engine(std::move(pages)), history(services.folder), bookmarks(services.folder),
          favicons([&http = services.http](HttpRequest request,
                                           qint64 most) { return http.fetch(std::move(request), most); },
                   [&attachments = services.attachments](QByteArray bytes) {
                       return attachments.picture(std::move(bytes), PictureSize::icon);
                   }),
          records(history, bookmarks, favicons, *engine, services.announcer),
          windowServices{services.scheduler,    services.announcer,    records,
                         around.conversation,   around.updates,        services.attachments,
                         services.urls,         services.raiser,       around.pasting,
                         around.showMainWindow, services.documentation},
          manager(
              {.scheduler = services.scheduler,
               .announcer = services.announcer,
               .pages = *engine,
               .startPage = startPage(BrowserSites()),
               .recordHistory = [this](const QString &url,
                                       const QString &title) { history.record(url, title); },
               .fetchFavicon = [this](QString host,
                                      QPointer<WebPage> page) { return favicons.fetchFavicon(host, page); },
               .makeWindow =
                   [this](BrowserManager &browser) {
                       return std::make_unique<BrowserWindowView>(browser, windowServices);
                   }})
    {
    }

    const std::unique_ptr<WebPageFactory> engine;
    HistoryStore history;
    BookmarkStore bookmarks;
    Favicons favicons;
    BrowsingRecords records;
    const BrowserWindowServices windowServices;
    BrowserManager manager;
};

BuiltInBrowser::BuiltInBrowser(Services services, QString problem)
    : m_services(std::move(services)), m_problem(std::move(problem))
{
}

BuiltInBrowser::~BuiltInBrowser() = default;

void BuiltInBrowser::attach(const Surroundings &surroundings)
{
    m_surroundings = std::make_unique<const Surroundings>(surroundings);
}

void BuiltInBrowser::shutDown()
{
    m_parts.reset();
    m_surroundings.reset();
}

BrowserManager *BuiltInBrowser::manager()
{
    if (m_parts)
        return &m_parts->manager;
    if (!m_surroundings || !m_problem.isEmpty())
        return nullptr;
    BrowserEngine engine = m_services.startEngine();
    if (!engine) {
        m_problem = engine.error();
        return nullptr;
    }
    m_parts = std::make_unique<Parts>(m_services, *m_surroundings, *std::move(engine));
    return &m_parts->manager;
}

bool BuiltInBrowser::isVisible() const
{
    return m_parts && m_parts->manager.window() && m_parts->manager.window()->isVisible();
}

void BuiltInBrowser::show()
{
    if (BrowserManager *browser = manager()) {
        browser->makeWindowIfNeeded();
        browser->window()->activate();
        return;
    }
    auto *box =
        new QMessageBox(QMessageBox::Warning, u"Morvane Browser"_s, u"The browser cannot be opened."_s,
                        QMessageBox::Ok, QApplication::activeWindow());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(m_problem.left(1).toUpper() + m_problem.mid(1));
    box->open();
}

void BuiltInBrowser::stop()
{
    if (const BrowserTab *tab = m_parts ? m_parts->manager.activeTab() : nullptr)
        tab->webView().stop();
}

template <class... Arguments>
Task<ToolResult> BuiltInBrowser::run(Task<QString> (PageOperations::*operation)(Arguments...),
                                     Arguments... arguments)
{
    BrowserManager *browser = manager();
    if (!browser)
        co_return u"Error: the built-in browser cannot be used: "_s + m_problem;
    co_return co_await (browser->operations().*operation)(std::move(arguments)...);
}

Task<ToolResult> BuiltInBrowser::browserOpen(QString urlString)
{
    return run(&PageOperations::browserOpen, std::move(urlString));
}

Task<ToolResult> BuiltInBrowser::browserRead()
{
    return run(&PageOperations::browserRead);
}

Task<ToolResult> BuiltInBrowser::browserClick(qint64 index)
{
    return run(&PageOperations::browserClick, index);
}

Task<ToolResult> BuiltInBrowser::browserType(qint64 index, QString text, bool submit)
{
    return run(&PageOperations::browserType, index, std::move(text), submit);
}

Task<ToolResult> BuiltInBrowser::browserScroll(qint64 amount)
{
    return run(&PageOperations::browserScroll, amount);
}

Task<ToolResult> BuiltInBrowser::browserBack()
{
    return run(&PageOperations::browserBack);
}

} // namespace morvane
