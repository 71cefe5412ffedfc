#pragma once

#include <QObject>
#include <functional>

class QAction;
class QMainWindow;
class QMenu;

namespace morvane {

class AppModel;
class ConversationPane;
class ConversationZoom;

/// The main window's menus, and the keys that go with them.
class MainMenus : public QObject {
    Q_OBJECT
public:
    /// Fills the menu bar of `window`; all must outlive this.
    MainMenus(QMainWindow &window, AppModel &model, ConversationPane &pane, ConversationZoom &zoom);
    /// For a program whose browser cannot be opened.
    void switchBrowserOff();

Q_SIGNALS:
    void aboutRequested();
    void settingsRequested();
    void shortcutsRequested();
    void browserRequested();

private:
    QMenu *addMenu(const QString &title);
    void addApplicationMenu();
    void addEditMenu();
    void addConversationMenu();
    void addViewMenu();
    void addHelpMenu();
    void fillConversations(QMenu *menu);
    /// Keeps an action to the times when no sheet asks something and the conversation has messages.
    void needConversation(QAction *action);
    /// Calls `update` now and whenever a sheet may have begun or ended to ask something.
    void updateWithSheets(QObject *context, const std::function<void()> &update);
    /// Keeps an action to the times when the program may be used.
    void stopWhileUpdateIsRequired(QAction *action);
    bool hasSheet() const;

    QMainWindow &m_window;
    AppModel &m_model;
    ConversationPane &m_pane;
    ConversationZoom &m_zoom;
    QAction *m_browser = nullptr;
};

} // namespace morvane
