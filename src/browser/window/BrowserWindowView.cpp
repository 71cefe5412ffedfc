#include "browser/window/BrowserWindowView.h"

#include "browser/tabs/BrowserManager.h"
#include "browser/window/AgentPanel.h"
#include "browser/window/BookmarksBar.h"
#include "browser/window/BrowserFindBar.h"
#include "browser/window/BrowserMenu.h"
#include "browser/window/BrowserMenuActions.h"
#include "browser/window/BrowserTabBar.h"
#include "browser/window/BrowserTabButton.h"
#include "browser/window/BrowserToolbar.h"
#include "browser/window/BrowsingRecords.h"
#include "browser/window/DownloadsBar.h"
#include "browser/window/HistorySheet.h"
#include "browser/window/PageArea.h"
#include "browser/window/PageQuestions.h"
#include "platform/Announcer.h"
#include "platform/WindowRaiser.h"
#include "ui/controls/ScreenRoom.h"

#include <QAction>
#include <QCloseEvent>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <functional>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QSize usualSize{1150, 780};

} // namespace

BrowserWindowView::BrowserWindowView(BrowserManager &manager, const BrowserWindowServices &services)
    : m_manager(manager), m_services(services), m_actions(new BrowserMenuActions(manager, services, *this))
{
    setWindowTitle(u"Morvane Browser"_s);
    makeContent();
    makeMenus();
    makeKeys();
    takePlace();
    connect(m_actions, &BrowserMenuActions::toggleFindRequested, m_find, &BrowserFindBar::toggle);
    connect(m_actions, &BrowserMenuActions::showHistoryRequested, this, &BrowserWindowView::showHistory);
    connect(m_find, &BrowserFindBar::focusLeft, m_page, &PageArea::focusPage);
    connect(m_toolbar, &BrowserToolbar::pageWanted, m_page, &PageArea::focusPage);
    connect(m_toolbar, &BrowserToolbar::comingPageWanted, m_page, &PageArea::focusComingPage);
    m_page->focusPage();
}

BrowserWindowView::~BrowserWindowView() = default;

void BrowserWindowView::makeContent()
{
    auto *content = new QWidget;
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins({});
    column->setSpacing(0);
    m_tabs = new BrowserTabBar(m_manager, m_services.announcer);
    m_toolbar = new BrowserToolbar(m_manager, *m_actions);
    m_bookmarks = new BookmarksBar(m_services.records, *m_actions);
    m_find = new BrowserFindBar(m_manager, m_services.scheduler, m_services.announcer);
    m_page = new PageArea(m_manager);
    m_panel = new AgentPanel(m_services);
    column->addWidget(m_tabs);
    column->addWidget(m_toolbar);
    column->addWidget(m_bookmarks);
    column->addWidget(m_find);
    column->addWidget(m_page, 1);
    column->addWidget(new DownloadsBar(m_manager.downloads()));
    column->addWidget(m_panel);
    setCentralWidget(content);
    connect(&m_manager, &BrowserManager::tabInserted, this, &BrowserWindowView::followIconsOf);
    for (qsizetype tab = 0; tab < std::ssize(m_manager.tabs()); ++tab)
        followIconsOf(tab);
}

void BrowserWindowView::followIconsOf(qsizetype tab)
{
    // A tab shows the icon of its site when it has come, and then the bookmarks of that site have it, too.
    connect(m_manager.tabs().at(static_cast<std::size_t>(tab)).get(), &BrowserTab::changed, m_bookmarks,
            &BookmarksBar::updateIcons);
}

void BrowserWindowView::makeMenus()
{
    BrowserMenu(*this, m_manager, *m_actions, m_services.records, *m_page).makeBrowserMenu();
}

void BrowserWindowView::makeKeys()
{
    connect(new QShortcut(Qt::CTRL | Qt::Key_L, this), &QShortcut::activated, m_toolbar,
            &BrowserToolbar::focusAddress);
    connect(new QShortcut(Qt::Key_F11, this), &QShortcut::activated, m_actions,
            &BrowserMenuActions::toggleFullScreen);
    connect(new QShortcut(Qt::Key_F6, this), &QShortcut::activated, this, [this] { focusNextRegion(1); });
    connect(new QShortcut(Qt::SHIFT | Qt::Key_F6, this), &QShortcut::activated, this,
            [this] { focusNextRegion(-1); });
}

void BrowserWindowView::takePlace()
{
    const QRect room(screen()->availableGeometry().topLeft(), screenRoom(*this));
    resize(usualSize.boundedTo(room.size()));
    move(room.center() - rect().center());
}

void BrowserWindowView::focusNextRegion(int step)
{
    const QList<QWidget *> regions{m_tabs, m_toolbar, m_page, m_panel};
    int current = 0;
    for (int index = 0; index < regions.size(); ++index)
        if (regions.at(index)->isAncestorOf(focusWidget()))
            current = index;
    const qsizetype next = (current + step + regions.size()) % regions.size();
    if (regions.at(next) == m_tabs)
        m_tabs->takeFocus();
    else if (regions.at(next) == m_toolbar)
        m_toolbar->focusAddress();
    else if (regions.at(next) == m_page)
        m_page->focusPage();
    else
        m_panel->takeFocus();
}

QList<QWidget *> BrowserWindowView::tabStops() const
{
    QList<QWidget *> stops;
    const auto appendStopsOf = [&stops](const QWidget *part, auto isWanted) {
        for (QWidget *child = part->nextInFocusChain(); child != part; child = child->nextInFocusChain())
            if (part->isAncestorOf(child) && child->isVisible() && child->isEnabled() &&
                !child->focusProxy() && (child->focusPolicy() & Qt::TabFocus) != 0 && isWanted(child))
                stops.append(child);
    };
    const auto isTab = [](const QWidget *stop) {
        return qobject_cast<const BrowserTabButton *>(stop) != nullptr;
    };
    const QLayout &column = *centralWidget()->layout();
    for (int index = 0; index < column.count(); ++index) {
        const QWidget *part = column.itemAt(index)->widget();
        appendStopsOf(part, isTab);
        appendStopsOf(part, std::not_fn(isTab));
    }
    return stops;
}

bool BrowserWindowView::focusNextPrevChild(bool next)
{
    // Part by part as they are seen; the toolkit's order is that in which tabs, bookmarks and pages came.
    const QList<QWidget *> stops = tabStops();
    const qsizetype current = stops.indexOf(focusWidget());
    if (current < 0)
        return QMainWindow::focusNextPrevChild(next);
    const qsizetype step = next ? 1 : stops.size() - 1;
    stops.at((current + step) % stops.size())->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

bool BrowserWindowView::isVisible() const
{
    return QMainWindow::isVisible() && !isMinimized();
}

void BrowserWindowView::orderFront()
{
    if (isMinimized())
        setWindowState(windowState() & ~Qt::WindowMinimized);
    setAttribute(Qt::WA_ShowWithoutActivating, true);
    QMainWindow::show();
    setAttribute(Qt::WA_ShowWithoutActivating, false);
    m_services.raiser.raiseWithoutFocus(*windowHandle());
}

void BrowserWindowView::activate()
{
    QMainWindow::show();
    m_services.raiser.activate(*windowHandle(), {});
}

void BrowserWindowView::askForDestination(const QString &suggestedFileName, const QString &site,
                                          std::function<void(const QString &path)> answer)
{
    askWhereToSave(*this, m_services, suggestedFileName, site, std::move(answer));
}

void BrowserWindowView::askForPermission(const std::shared_ptr<PagePermission> &permission,
                                         std::function<void(bool isGranted)> answer)
{
    askForPagePermission(*this, m_services, *permission, std::move(answer));
}

void BrowserWindowView::showSharePicker(const QUrl &address)
{
    showShareMenu(*m_page, m_services, address);
}

void BrowserWindowView::showHistory()
{
    if (!m_history)
        m_history = new HistorySheet(m_services.records, *m_actions, this);
    m_history->open();
}

void BrowserWindowView::closeEvent(QCloseEvent *event)
{
    QMainWindow::closeEvent(event);
    if (event->isAccepted())
        m_manager.windowClosed();
}

void BrowserWindowView::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || isFullScreen() == m_wasFullScreen)
        return;
    m_wasFullScreen = isFullScreen();
    if (auto *action = findChild<QAction *>(u"fullScreen"_s))
        action->setText(isFullScreen() ? u"Exit Full Screen\tCtrl+F"_s : u"Enter Full Screen\tCtrl+F"_s);
    m_services.announcer.announce(isFullScreen() ? u"Full screen entered."_s : u"Full screen left."_s);
}

} // namespace morvane
