#include "browser/window/BrowserMenu.h"

#include "browser/tabs/BrowserManager.h"
#include "browser/window/BrowserMenuActions.h"
#include "browser/window/HistoryMenuDelegate.h"
#include "browser/window/PageArea.h"
#include "ui/window/EditMenu.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>

using namespace Qt::StringLiterals;

namespace morvane {

BrowserMenu::BrowserMenu(QMainWindow &window, BrowserManager &manager, BrowserMenuActions &actions,
                         const BrowsingRecords &records, PageArea &page)
    : m_window(window), m_manager(manager), m_actions(actions), m_records(records), m_page(page)
{
}

void BrowserMenu::makeBrowserMenu()
{
    addApplicationMenu();
    addFileMenu();
    addEditMenu();
    addViewMenu();
    addHistoryMenu();
    addOtherMenus();
}

QMenu *BrowserMenu::addMenu(const QString &title)
{
    return m_window.menuBar()->addMenu(title);
}

QAction *BrowserMenu::add(QMenu *menu, const QString &text, const QKeySequence &key, Slot slot)
{
    QAction *action = menu->addAction(text, &m_actions, slot);
    action->setShortcut(key);
    // A key that is held for too long must not close every tab, or load without end.
    action->setAutoRepeat(false);
    return action;
}

void BrowserMenu::addApplicationMenu()
{
    QMenu *menu = addMenu(u"&Morvane"_s);
    add(menu, u"About Morvane Browser"_s, {}, &BrowserMenuActions::showAbout);
    menu->addSeparator();
    add(menu, u"Hide Morvane"_s, Qt::CTRL | Qt::Key_H, &BrowserMenuActions::hideProgram);
    menu->addSeparator();
    menu->addAction(u"Quit Morvane"_s, qApp, &QApplication::quit)->setShortcut(Qt::CTRL | Qt::Key_Q);
}

void BrowserMenu::addFileMenu()
{
    QMenu *menu = addMenu(u"&File"_s);
    add(menu, u"New Tab"_s, Qt::CTRL | Qt::Key_T, &BrowserMenuActions::newTab);
    add(menu, u"Close Tab"_s, Qt::CTRL | Qt::Key_W, &BrowserMenuActions::closeTab);
    add(menu, u"Close Window"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_W, &BrowserMenuActions::closeWindow);
    menu->addSeparator();
    add(menu, u"Share…"_s, {}, &BrowserMenuActions::share);
}

void BrowserMenu::addEditMenu()
{
    auto *menu = new EditMenu(m_window);
    menu->setOtherPlace(m_page, [&page = m_page](const QByteArray &slot) { page.edit(slot); });
    menu->setParent(m_window.menuBar(), menu->windowFlags());
    m_window.menuBar()->addMenu(menu);
    menu->addSeparator();
    add(menu->addMenu(u"Find"_s), u"Find…"_s, Qt::CTRL | Qt::Key_F, &BrowserMenuActions::find);
}

void BrowserMenu::addViewMenu()
{
    QMenu *menu = addMenu(u"&View"_s);
    add(menu, u"Reload Page"_s, Qt::CTRL | Qt::Key_R, &BrowserMenuActions::reload);
    menu->addSeparator();
    add(menu, u"Actual Size"_s, Qt::CTRL | Qt::Key_0, &BrowserMenuActions::zoomReset);
    // The equals sign stands below the plus sign on many keyboards.
    QAction *in = add(menu, u"Zoom In"_s, {}, &BrowserMenuActions::zoomIn);
    in->setShortcuts({Qt::CTRL | Qt::Key_Equal, Qt::CTRL | Qt::Key_Plus});
    QAction *out = add(menu, u"Zoom Out"_s, Qt::CTRL | Qt::Key_Minus, &BrowserMenuActions::zoomOut);
    for (QAction *zoom : {in, out})
        zoom->setAutoRepeat(true);
    menu->addSeparator();
    // Its key is that of "Find…", too, which comes first: a key that two commands have would do nothing.
    QAction *fullScreen =
        add(menu, u"Enter Full Screen\tCtrl+F"_s, {}, &BrowserMenuActions::toggleFullScreen);
    fullScreen->setObjectName(u"fullScreen"_s);
}

void BrowserMenu::addHistoryMenu()
{
    QMenu *menu = addMenu(u"Hi&story"_s);
    QAction *back = add(menu, u"Back"_s, Qt::CTRL | Qt::Key_BracketLeft, &BrowserMenuActions::goBack);
    QAction *forward =
        add(menu, u"Forward"_s, Qt::CTRL | Qt::Key_BracketRight, &BrowserMenuActions::goForward);
    const auto update = [&manager = m_manager, back, forward] {
        back->setEnabled(manager.canGoBack());
        forward->setEnabled(manager.canGoForward());
    };
    QObject::connect(&m_manager, &BrowserManager::toolbarStateChanged, back, update);
    QObject::connect(&m_manager, &BrowserManager::activeTabChanged, back, update);
    update();
    menu->addSeparator();
    add(menu, u"Reopen Closed Tab"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_T, &BrowserMenuActions::reopenClosedTab);
    menu->addSeparator();
    add(menu, u"Show All History"_s, Qt::CTRL | Qt::Key_Y, &BrowserMenuActions::showHistory);
    menu->addSeparator();
    add(menu, u"Clear History…"_s, {}, &BrowserMenuActions::confirmClearHistory);
    add(menu, u"Clear Browsing Data…"_s, {}, &BrowserMenuActions::confirmClearBrowsingData);
    new HistoryMenuDelegate(*menu, m_records, m_actions);
}

void BrowserMenu::addOtherMenus()
{
    add(addMenu(u"&Bookmarks"_s), u"Add Bookmark"_s, Qt::CTRL | Qt::Key_D,
        &BrowserMenuActions::addBookmarkForActiveTab);
    add(addMenu(u"&Window"_s), u"Minimize"_s, Qt::CTRL | Qt::Key_M, &BrowserMenuActions::minimize);
    add(addMenu(u"&Help"_s), u"Morvane Help"_s, Qt::CTRL | Qt::Key_Question, &BrowserMenuActions::showHelp);
}

} // namespace morvane
