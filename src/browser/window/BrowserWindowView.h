#pragma once

#include "browser/tabs/BrowserWindow.h"
#include "browser/window/BrowserWindowServices.h"

#include <QMainWindow>
#include <QPointer>

namespace morvane {

class AgentPanel;
class BookmarksBar;
class BrowserFindBar;
class BrowserManager;
class BrowserMenuActions;
class BrowserTabBar;
class BrowserToolbar;
class HistorySheet;
class PageArea;

/// The browser's window: tabs, toolbar, bookmarks, find bar, the page, the files that are being written, and
/// the panel through which the user talks to the agent. Closing it leaves the tabs as they are.
class BrowserWindowView : public QMainWindow, public BrowserWindow {
    Q_OBJECT
public:
    /// `manager` outlives the window.
    BrowserWindowView(BrowserManager &manager, const BrowserWindowServices &services);
    ~BrowserWindowView() override;

    bool isVisible() const override;
    void orderFront() override;
    void activate() override;
    void askForDestination(const QString &suggestedFileName, const QString &site,
                           std::function<void(const QString &path)> answer) override;
    void askForPermission(const std::shared_ptr<PagePermission> &permission,
                          std::function<void(bool isGranted)> answer) override;
    void showSharePicker(const QUrl &address) override;

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void makeContent();
    void makeMenus();
    void followIconsOf(qsizetype tab);
    void makeKeys();
    void takePlace();
    void focusNextRegion(int step);
    QList<QWidget *> tabStops() const;
    void showHistory();

    BrowserManager &m_manager;
    const BrowserWindowServices m_services;
    BrowserMenuActions *m_actions;
    BrowserTabBar *m_tabs = nullptr;
    BrowserToolbar *m_toolbar = nullptr;
    BookmarksBar *m_bookmarks = nullptr;
    BrowserFindBar *m_find = nullptr;
    PageArea *m_page = nullptr;
    AgentPanel *m_panel = nullptr;
    QPointer<HistorySheet> m_history;
    bool m_wasFullScreen = false;
};

} // namespace morvane
