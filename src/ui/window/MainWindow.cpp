#include "ui/window/MainWindow.h"

#include "app/AppModel.h"
#include "app/BrowserWindowPort.h"
#include "ui/controls/AccessibleEvents.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/conversation/SentPictures.h"
#include "ui/settings/SettingsView.h"
#include "ui/sheets/PermissionView.h"
#include "ui/sheets/QuestionView.h"
#include "ui/window/AboutBox.h"
#include "ui/window/ComposerView.h"
#include "ui/window/ConversationListView.h"
#include "ui/window/ConversationPane.h"
#include "ui/window/ConversationZoom.h"
#include "ui/window/DetailColumn.h"
#include "ui/window/FileDropFilter.h"
#include "ui/window/HeaderView.h"
#include "ui/window/LocalModelBanner.h"
#include "ui/window/MainMenus.h"
#include "ui/window/OnboardingView.h"
#include "ui/window/PictureView.h"
#include "ui/window/RequiredUpdateView.h"
#include "ui/window/ShortcutList.h"
#include "ui/window/StatusBarView.h"
#include "ui/window/UpdateAlertView.h"
#include "ui/window/UpdateBanner.h"
#include "ui/window/WelcomeView.h"

#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QSplitter>
#include <QStackedWidget>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// The header's buttons and the message field still have room in it: half of a small screen at scale 2.
constexpr int smallestDetail = 220;

} // namespace

MainWindow::MainWindow(AppModel &model, const MainWindowServices &services)
    : m_model(model), m_services(services), m_place(model.settings())
{
    setWindowTitle(u"Morvane"_s);

    auto *sidebar = new ConversationListView(model);
    QWidget *detail = makeDetail();
    detail->setMinimumWidth(smallestDetail);
    m_split = new QSplitter;
    m_split->setChildrenCollapsible(false);
    m_split->setHandleWidth(1);
    m_split->addWidget(sidebar);
    m_split->addWidget(detail);
    m_split->setStretchFactor(0, 0);
    m_split->setStretchFactor(1, 1);
    setCentralWidget(m_split);
    m_place.restore(*this, *m_split);
    makeMenus();

    connect(sidebar, &ConversationListView::openedByMouse, m_composer, &ComposerView::focusDraft);
    connect(&model.transcript(), &Transcript::messagesReset, this, &MainWindow::updateConversationRegion);
    connect(&model.transcript(), &Transcript::messageAppended, this, &MainWindow::updateConversationRegion);
    connect(&model.gate(), &ApprovalGate::pendingToolCallChanged, this, &MainWindow::showPendingCall);
    connect(&model.questions(), &Questions::pendingQuestionChanged, this, &MainWindow::showPendingQuestion);
    connect(&model.updates(), &UpdateModel::changed, this, &MainWindow::showRequiredUpdate);
    connect(&model.updates(), &UpdateModel::alertChanged, this, &MainWindow::showUpdateAlert);
    showRequiredUpdate();
    updateConversationRegion();
    m_composer->focusDraft();
}

QWidget *MainWindow::makeDetail()
{
    auto *header = new HeaderView(m_model, m_services.browserWindow);
    connect(header, &HeaderView::settingsRequested, this, &MainWindow::showSettings);
    auto *welcome = new WelcomeView(m_model);
    connect(welcome, &WelcomeView::settingsRequested, this, &MainWindow::showSettings);
    m_welcome = welcome;
    auto *view = new ChatScrollView(m_model.transcript(), m_model.activity(), m_services.announcer);
    m_conversation =
        new ConversationPane(view, m_model.transcript(), m_services.settings.scheduler, m_services.announcer);
    auto *pictures = new SentPictures(m_services.settings.scheduler, m_services.attachments, m_conversation);
    view->pictures().setPictures(*pictures);
    connect(&view->pictures(), &PictureButtons::opened, this, &MainWindow::showPicture);
    m_region = new QStackedWidget;
    setAccessibleRole(m_region, QAccessible::Client); // "layered pane" says nothing to anyone
    m_region->addWidget(m_welcome);
    m_region->addWidget(m_conversation);
    m_composer = new ComposerView(m_model, m_model.updates(), m_services.pasting);
    connect(m_composer, &ComposerView::pageRequested, view, &ChatScrollView::scrollPage);
    connect(m_conversation, &ConversationPane::findClosed, m_composer, &ComposerView::focusDraft);
    connect(&m_model, &AppModel::suggestedPrompt, m_composer, &ComposerView::takeSuggestion);

    auto *update = new UpdateBanner(m_model.updates());
    connect(update, &UpdateBanner::focusLost, m_composer, &ComposerView::focusDraft);

    auto *detail = new DetailColumn(
        {header, new LocalModelBanner(m_model), update, m_region, m_composer, new StatusBarView(m_model)},
        m_region, m_composer);

    auto *drops = new FileDropFilter(detail);
    connect(drops, &FileDropFilter::filesDropped, m_composer, &ComposerView::handleFiles);
    connect(drops, &FileDropFilter::hoveringChanged, m_composer, &ComposerView::setDropMark);
    return detail;
}

void MainWindow::updateConversationRegion()
{
    QWidget *wanted = m_model.messages().isEmpty() ? m_welcome : static_cast<QWidget *>(m_conversation);
    if (m_region->currentWidget() == wanted)
        return;
    // What is hidden with the keyboard in it would hand that to whatever comes next.
    if (m_region->isAncestorOf(QApplication::focusWidget()))
        m_composer->focusDraft();
    m_region->setCurrentWidget(wanted);
}

void MainWindow::makeMenus()
{
    auto *zoom = new ConversationZoom(m_conversation->view(), m_model.settings(), m_services.announcer, this);
    auto *menus = new MainMenus(*this, m_model, *m_conversation, *zoom);
    connect(menus, &MainMenus::aboutRequested, this, &MainWindow::showAbout);
    connect(menus, &MainMenus::settingsRequested, this, &MainWindow::showSettings);
    connect(menus, &MainMenus::shortcutsRequested, this, &MainWindow::showShortcuts);
    connect(menus, &MainMenus::browserRequested, this, [this] { m_services.browserWindow.show(); });
    if (!m_services.browserWindow.isAvailable())
        menus->switchBrowserOff();
}

void MainWindow::showSettings()
{
    if (!m_settings) {
        m_settings = new SettingsView(m_services.settings, m_model.localModel(), m_services.toolServers,
                                      m_services.announcer, this);
        m_settings->setAttribute(Qt::WA_DeleteOnClose);
    }
    {
        // The window is told of; what it is made of would be some seventy events.
        const AccessibleSilence silence(m_settings);
        m_settings->show();
    }
    m_settings->raise();
    m_settings->activateWindow();
}

void MainWindow::showAbout()
{
    showAboutBox(*this, u"About Morvane"_s);
}

void MainWindow::showShortcuts()
{
    if (!m_shortcuts) {
        m_shortcuts = new ShortcutList(this);
        m_shortcuts->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_shortcuts->show();
    m_shortcuts->raise();
    m_shortcuts->activateWindow();
}

void MainWindow::showPicture(const ChatAttachment &picture)
{
    auto *view = new PictureView(picture, m_services.settings.scheduler, m_services.attachments, this);
    view->open();
}

void MainWindow::showPendingCall()
{
    if (!m_permission)
        m_permission = new PermissionView(m_model.gate(), this);
}

void MainWindow::showPendingQuestion()
{
    if (!m_question)
        m_question = new QuestionView(m_model.questions(), this);
}

void MainWindow::showRequiredUpdate()
{
    if (!m_model.updates().isUpdateRequired())
        return;
    if (!m_requiredUpdate)
        m_requiredUpdate = new RequiredUpdateView(m_model.updates(), this);
    // Nothing else can be used now, in other windows either.
    for (QWidget *other : QApplication::topLevelWidgets())
        if (other != this && other->isVisible())
            other->close();
}

void MainWindow::showUpdateAlert()
{
    if (!m_updateAlert)
        m_updateAlert = new UpdateAlertView(m_model.updates(), this);
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    // A letter that nobody else wanted is the beginning of a message.
    const bool isLetter = !event->text().isEmpty() && event->text().at(0).isPrint() &&
                          !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (!isLetter || !centralWidget()->isAncestorOf(focusWidget())) {
        QMainWindow::keyPressEvent(event);
        return;
    }
    const QWidget *before = focusWidget();
    m_composer->focusDraft();
    if (focusWidget() != before) // or the letter would come back here
        QApplication::sendEvent(focusWidget(), event);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    m_place.remember(*this, *m_split);
    QMainWindow::closeEvent(event);
}

void MainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (m_model.showOnboarding() && !m_onboarding)
        m_onboarding = new OnboardingView(m_model, this);
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || isActiveWindow())
        return;
    m_model.saveCurrentConversation();
    m_place.remember(*this, *m_split);
}

} // namespace morvane
