#pragma once

#include <QKeySequence>

class QAction;
class QMainWindow;
class QMenu;

namespace morvane {

class BrowserManager;
class BrowserMenuActions;
class BrowsingRecords;
class PageArea;

/// The menu bar of the browser's window, which takes the place of the main window's while the browser is in
/// front: its keys hold in its window only.
class BrowserMenu {
public:
    /// All of them outlive the window.
    BrowserMenu(QMainWindow &window, BrowserManager &manager, BrowserMenuActions &actions,
                const BrowsingRecords &records, PageArea &page);

    /// Fills the window's menu bar, once.
    void makeBrowserMenu();

private:
    using Slot = void (BrowserMenuActions::*)();

    QMenu *addMenu(const QString &title);
    QAction *add(QMenu *menu, const QString &text, const QKeySequence &key, Slot slot);
    void addApplicationMenu();
    void addFileMenu();
    void addEditMenu();
    void addViewMenu();
    void addHistoryMenu();
    void addOtherMenus();

    QMainWindow &m_window;
    BrowserManager &m_manager;
    BrowserMenuActions &m_actions;
    const BrowsingRecords &m_records;
    PageArea &m_page;
};

} // namespace morvane
