#pragma once

#include "app/SettingsModel.h"
#include "ui/window/WindowPlace.h"

#include <QMainWindow>
#include <QPointer>

class QSplitter;
class QStackedWidget;

namespace morvane {

class Announcer;
class AppModel;
class AttachmentService;
class BrowserWindowPort;
class ComposerView;
struct ChatAttachment;
class ConversationPane;
class FieldPasting;
class MCPManager;
class OnboardingView;
class PermissionView;
class QuestionView;
class RequiredUpdateView;
class SettingsView;
class ShortcutList;
class UpdateAlertView;

/// What the main window uses beside the application model; all of it outlives the window.
struct MainWindowServices {
    Announcer &announcer;
    BrowserWindowPort &browserWindow;
    MCPManager &toolServers;
    SettingsServices settings;
    AttachmentService &attachments;
    FieldPasting *pasting = nullptr; ///< Without it the toolkit waits for what is pasted.
};

/// The main window: the sidebar with the conversations, and beside it header, banner, conversation, composer
/// and status bar. Sheets and the settings window are made on first use.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    /// `model` must outlive the window.
    MainWindow(AppModel &model, const MainWindowServices &services);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QWidget *makeDetail();
    void makeMenus();
    void updateConversationRegion();
    void showSettings();
    void showAbout();
    void showShortcuts();
    void showPicture(const ChatAttachment &picture);
    void showPendingCall();
    void showPendingQuestion();
    void showRequiredUpdate();
    void showUpdateAlert();

    AppModel &m_model;
    const MainWindowServices m_services;
    WindowPlace m_place;
    QSplitter *m_split = nullptr;
    QStackedWidget *m_region = nullptr;
    QWidget *m_welcome = nullptr;
    ConversationPane *m_conversation = nullptr;
    ComposerView *m_composer = nullptr;
    PermissionView *m_permission = nullptr;
    QuestionView *m_question = nullptr;
    OnboardingView *m_onboarding = nullptr;
    RequiredUpdateView *m_requiredUpdate = nullptr;
    UpdateAlertView *m_updateAlert = nullptr;
    QPointer<SettingsView> m_settings;
    QPointer<ShortcutList> m_shortcuts;
};

} // namespace morvane
