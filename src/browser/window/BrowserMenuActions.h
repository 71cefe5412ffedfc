#pragma once

#include "browser/window/BrowserWindowServices.h"

#include <QObject>

class QWidget;

namespace morvane {

class BrowserManager;

/// What the user can do in the browser, however it is asked for: by menu, key, button or list. Main thread.
class BrowserMenuActions : public QObject {
    Q_OBJECT
public:
    /// Both outlive the object; `window` is the one that is asked in, and owns it.
    BrowserMenuActions(BrowserManager &manager, const BrowserWindowServices &services, QWidget &window);

    /// Opens an address, or searches for a text, in the active tab.
    void open(const QString &text);

public Q_SLOTS:
    void newTab();
    void closeTab();
    void closeWindow();
    void share();
    void find();
    void reload();
    void zoomReset();
    void zoomIn();
    void zoomOut();
    void toggleFullScreen();
    void goBack();
    void goForward();
    void reopenClosedTab();
    void showHistory();
    void confirmClearHistory();
    void confirmClearBrowsingData();
    void addBookmarkForActiveTab();
    void hideProgram();
    void minimize();
    void showAbout();
    void showHelp();

Q_SIGNALS:
    /// The window shows or hides its find bar.
    void toggleFindRequested();
    void showHistoryRequested();

private:
    void confirm(const QString &message, const QString &information, const QString &button,
                 void (BrowsingRecords::*action)());

    BrowserManager &m_manager;
    const BrowserWindowServices m_services;
    QWidget &m_window;
};

} // namespace morvane
