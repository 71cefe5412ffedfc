#pragma once

#include <QMainWindow>
#include <QPointer>

class QStackedWidget;

namespace morvane {

class AppModel;
class ChatScrollView;
class ComposerView;
class PermissionView;
class QuestionView;
class SettingsView;

/// The main window: the sidebar with the conversations, and beside it header, banner, conversation, composer
/// and status bar. Sheets and the settings window are made on first use.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    /// `model` must outlive the window.
    explicit MainWindow(AppModel &model);

protected:
    void changeEvent(QEvent *event) override;

private:
    QWidget *makeDetail();
    void addMenus();
    void addApplicationMenu();
    void addEditMenu();
    void addConversationMenu();
    void fillConversations(QMenu *menu);
    void applyToFocus(const char *slot);
    void updateConversationRegion();
    void showSettings();
    void showAbout();
    void showPendingCall();
    void showPendingQuestion();

    AppModel &m_model;
    QStackedWidget *m_region = nullptr;
    QWidget *m_welcome = nullptr;
    ChatScrollView *m_conversation = nullptr;
    ComposerView *m_composer = nullptr;
    PermissionView *m_permission = nullptr;
    QuestionView *m_question = nullptr;
    QPointer<SettingsView> m_settings;
};

} // namespace morvane
