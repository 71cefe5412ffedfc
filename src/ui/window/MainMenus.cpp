#include "ui/window/MainMenus.h"

#include "app/AppModel.h"
#include "base/LabelText.h"
#include "ui/window/ConversationPane.h"
#include "ui/window/ConversationZoom.h"
#include "ui/window/EditMenu.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Logical pixels of a conversation's title in the menu.
constexpr int widestTitle = 380;

} // namespace

MainMenus::MainMenus(QMainWindow &window, AppModel &model, ConversationPane &pane, ConversationZoom &zoom)
    : QObject(&window), m_window(window), m_model(model), m_pane(pane), m_zoom(zoom)
{
    addApplicationMenu();
    addEditMenu();
    addViewMenu();
    addConversationMenu();
    addHelpMenu();
}

QMenu *MainMenus::addMenu(const QString &title)
{
    return m_window.menuBar()->addMenu(title);
}

void MainMenus::addApplicationMenu()
{
    QMenu *menu = addMenu(u"&Morvane"_s);
    QAction *about = menu->addAction(u"About Morvane"_s, this, &MainMenus::aboutRequested);
    stopWhileUpdateIsRequired(about);
    UpdateModel &updates = m_model.updates();
    QAction *check = menu->addAction(u"Check for Updates…"_s, &updates, &UpdateModel::startCheck);
    check->setShortcut(Qt::CTRL | Qt::Key_U);
    connect(&updates, &UpdateModel::isCheckingUpdateChanged, check, [&updates, check] {
        check->setText(updates.isCheckingUpdate() ? u"Checking for Updates…"_s : u"Check for Updates…"_s);
        check->setEnabled(!updates.isCheckingUpdate());
    });
    menu->addSeparator();
    QAction *settings = menu->addAction(u"Settings…"_s, this, &MainMenus::settingsRequested);
    settings->setShortcut(Qt::CTRL | Qt::Key_Comma);
    stopWhileUpdateIsRequired(settings);
    menu->addSeparator();
    QAction *quit = menu->addAction(u"Quit Morvane"_s, qApp, &QApplication::quit);
    quit->setShortcut(QKeySequence::Quit);
}

void MainMenus::addEditMenu()
{
    auto *menu = new EditMenu(m_window);
    menu->setParent(m_window.menuBar(), menu->windowFlags());
    m_window.menuBar()->addMenu(menu);
    menu->addSeparator();
    QAction *find = menu->addAction(u"Find in Conversation…"_s, &m_pane, &ConversationPane::find);
    find->setShortcut(QKeySequence::Find);
    needConversation(find);
    QAction *next = menu->addAction(u"Find Next"_s, &m_pane, &ConversationPane::findNext);
    next->setShortcut(Qt::Key_F3);
    needConversation(next);
    QAction *previous = menu->addAction(u"Find Previous"_s, &m_pane, &ConversationPane::findPrevious);
    previous->setShortcut(Qt::SHIFT | Qt::Key_F3);
    needConversation(previous);
}

void MainMenus::addViewMenu()
{
    QMenu *menu = addMenu(u"&View"_s);
    QAction *in = menu->addAction(u"Larger Text"_s, &m_zoom, &ConversationZoom::zoomIn);
    // The plus sign is a shifted key on many keyboards.
    in->setShortcuts({Qt::CTRL | Qt::Key_Plus, Qt::CTRL | Qt::Key_Equal});
    QAction *out = menu->addAction(u"Smaller Text"_s, &m_zoom, &ConversationZoom::zoomOut);
    out->setShortcut(Qt::CTRL | Qt::Key_Minus);
    QAction *actual = menu->addAction(u"Usual Text Size"_s, &m_zoom, &ConversationZoom::actualSize);
    actual->setShortcut(Qt::CTRL | Qt::Key_0);
    const auto update = [this, in, out, actual] {
        in->setEnabled(m_zoom.canZoomIn() && !hasSheet());
        out->setEnabled(m_zoom.canZoomOut() && !hasSheet());
        actual->setEnabled(!m_zoom.isActualSize() && !hasSheet());
    };
    connect(&m_zoom, &ConversationZoom::changed, this, update);
    updateWithSheets(this, update);
    menu->addSeparator();
    QAction *latest =
        menu->addAction(u"Jump to the Latest Message"_s, &m_pane, &ConversationPane::jumpToLatest);
    latest->setShortcut(Qt::CTRL | Qt::Key_J);
    needConversation(latest);
    menu->addSeparator();
    m_browser = menu->addAction(u"Morvane Browser"_s, this, &MainMenus::browserRequested);
    stopWhileUpdateIsRequired(m_browser);
}

void MainMenus::switchBrowserOff()
{
    m_browser->setVisible(false);
}

void MainMenus::addConversationMenu()
{
    QMenu *menu = addMenu(u"&Conversation"_s);
    QAction *compose = menu->addAction(u"New Conversation"_s, &m_model, &AppModel::newConversation);
    compose->setShortcut(QKeySequence::New);
    stopWhileUpdateIsRequired(compose);
    QMenu *conversations = menu->addMenu(u"Conversations"_s);
    stopWhileUpdateIsRequired(conversations->menuAction());
    connect(conversations, &QMenu::aboutToShow, this,
            [this, conversations] { fillConversations(conversations); });
    menu->addSeparator();
    QAction *stop = menu->addAction(u"Stop Generating"_s, &m_model, &AppModel::cancel);
    stop->setShortcut(Qt::Key_Escape);
    // While a sheet asks something, Escape belongs to it.
    const auto update = [this, stop] { stop->setEnabled(m_model.canCancel() && !hasSheet()); };
    connect(&m_model, &AppModel::isBusyChanged, stop, update);
    updateWithSheets(stop, update);
}

void MainMenus::addHelpMenu()
{
    QMenu *menu = addMenu(u"&Help"_s);
    QAction *shortcuts = menu->addAction(u"Keyboard Shortcuts"_s, this, &MainMenus::shortcutsRequested);
    shortcuts->setShortcut(Qt::Key_F1);
    stopWhileUpdateIsRequired(shortcuts);
}

bool MainMenus::hasSheet() const
{
    return m_model.gate().pendingToolCall() || m_model.questions().pendingQuestion() ||
           m_model.showOnboarding() || m_model.updates().isUpdateRequired() || m_model.updates().alert();
}

void MainMenus::needConversation(QAction *action)
{
    const auto update = [this, action] { action->setEnabled(!m_model.messages().isEmpty() && !hasSheet()); };
    connect(&m_model.transcript(), &Transcript::messagesReset, action, update);
    connect(&m_model.transcript(), &Transcript::messageAppended, action, update);
    updateWithSheets(action, update);
}

void MainMenus::updateWithSheets(QObject *context, const std::function<void()> &update)
{
    connect(&m_model.gate(), &ApprovalGate::pendingToolCallChanged, context, update);
    connect(&m_model.questions(), &Questions::pendingQuestionChanged, context, update);
    connect(&m_model, &AppModel::showOnboardingChanged, context, update);
    connect(&m_model.updates(), &UpdateModel::changed, context, update);
    connect(&m_model.updates(), &UpdateModel::alertChanged, context, update);
    update();
}

void MainMenus::stopWhileUpdateIsRequired(QAction *action)
{
    const auto update = [this, action] { action->setEnabled(!m_model.updates().isUpdateRequired()); };
    connect(&m_model.updates(), &UpdateModel::changed, action, update);
    update();
}

void MainMenus::fillConversations(QMenu *menu)
{
    menu->clear();
    const QList<ConversationMeta> &conversations = m_model.conversations().list();
    if (conversations.isEmpty()) {
        menu->addAction(u"No saved conversations"_s)->setEnabled(false);
        return;
    }
    for (const ConversationMeta &meta : conversations) {
        QString title = labelText(meta.title).simplified();
        title.replace(u'&', u"&&"_s);
        menu->addAction(menu->fontMetrics().elidedText(title, Qt::ElideRight, widestTitle), this,
                        [this, id = meta.id] { m_model.openConversation(id); });
    }
}

} // namespace morvane
