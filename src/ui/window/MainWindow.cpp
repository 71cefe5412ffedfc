#include "ui/window/MainWindow.h"
#include "ui/controls/LabelText.h"

#include "app/AppModel.h"
#include "ui/conversation/ChatScrollView.h"
#include "ui/settings/SettingsView.h"
#include "ui/sheets/PermissionView.h"
#include "ui/sheets/QuestionView.h"
#include "ui/window/ComposerView.h"
#include "ui/window/ConversationListView.h"
#include "ui/window/FileDropFilter.h"
#include "ui/window/HeaderView.h"
#include "ui/window/LocalModelBanner.h"
#include "ui/window/StatusBarView.h"
#include "ui/window/WelcomeView.h"

#include <QApplication>
#include <QEvent>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QSize standardSize{760, 720};
constexpr QSize smallestSize{600, 640};
/// Of the standard width, whatever the font: large type needs the room beside it more than the titles do.
constexpr int firstSidebar = 200;
constexpr int smallestDetail = 400;

} // namespace

MainWindow::MainWindow(AppModel &model, const MainWindowServices &services)
    : m_model(model), m_services(services)
{
    setWindowTitle(u"Morvane"_s);
    setMinimumSize(smallestSize);
    resize(standardSize);

    auto *sidebar = new ConversationListView(model);
    QWidget *detail = makeDetail();
    detail->setMinimumWidth(smallestDetail);
    auto *split = new QSplitter;
    split->setChildrenCollapsible(false);
    split->setHandleWidth(1);
    split->addWidget(sidebar);
    split->addWidget(detail);
    split->setStretchFactor(0, 0);
    split->setStretchFactor(1, 1);
    split->setSizes({firstSidebar, standardSize.width() - firstSidebar});
    setCentralWidget(split);
    addMenus();

    connect(sidebar, &ConversationListView::openedByMouse, m_composer, &ComposerView::focusDraft);
    connect(&model.transcript(), &Transcript::messagesReset, this, &MainWindow::updateConversationRegion);
    connect(&model.transcript(), &Transcript::messageAppended, this, &MainWindow::updateConversationRegion);
    connect(&model.gate(), &ApprovalGate::pendingToolCallChanged, this, &MainWindow::showPendingCall);
    connect(&model.questions(), &Questions::pendingQuestionChanged, this, &MainWindow::showPendingQuestion);
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
    m_conversation = new ChatScrollView(m_model.transcript(), m_model.activity(), m_services.announcer);
    m_region = new QStackedWidget;
    m_region->addWidget(m_welcome);
    m_region->addWidget(m_conversation);
    m_composer = new ComposerView(m_model, m_services.updates);
    connect(&m_model, &AppModel::suggestedPrompt, m_composer, &ComposerView::takeSuggestion);

    auto *detail = new QWidget;
    auto *column = new QVBoxLayout(detail);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(header);
    column->addWidget(new LocalModelBanner(m_model));
    column->addWidget(m_region, 1);
    column->addWidget(m_composer);
    column->addWidget(new StatusBarView(m_model));

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
    const bool hadFocus = m_region->isAncestorOf(QApplication::focusWidget());
    m_region->setCurrentWidget(wanted);
    if (hadFocus)
        m_composer->focusDraft();
}

void MainWindow::addMenus()
{
    addApplicationMenu();
    addEditMenu();
    addConversationMenu();
}

void MainWindow::addApplicationMenu()
{
    QMenu *menu = menuBar()->addMenu(u"&Morvane"_s);
    menu->addAction(u"About Morvane"_s, this, &MainWindow::showAbout);
    QAction *updates = menu->addAction(u"Check for Updates…"_s);
    updates->setShortcut(Qt::CTRL | Qt::Key_U);
    updates->setEnabled(false); // nothing in this version looks for them
    menu->addSeparator();
    QAction *settings = menu->addAction(u"Settings…"_s, this, &MainWindow::showSettings);
    settings->setShortcut(Qt::CTRL | Qt::Key_Comma);
    menu->addSeparator();
    QAction *quit = menu->addAction(u"Quit Morvane"_s, qApp, &QApplication::quit);
    quit->setShortcut(QKeySequence::Quit);
}

void MainWindow::addEditMenu()
{
    struct Entry {
        const char *text;
        QKeySequence::StandardKey key;
        const char *slot;
    };
    // The shortcuts are shown for orientation; the focused field handles its own keys.
    constexpr Entry entries[] = {
        {"Undo", QKeySequence::Undo, "undo"},    {"Redo", QKeySequence::Redo, "redo"},
        {"Cut", QKeySequence::Cut, "cut"},       {"Copy", QKeySequence::Copy, "copy"},
        {"Paste", QKeySequence::Paste, "paste"}, {"Select All", QKeySequence::SelectAll, "selectAll"}};
    QMenu *menu = menuBar()->addMenu(u"&Edit"_s);
    for (const Entry &entry : entries) {
        QAction *action = menu->addAction(QString::fromLatin1(entry.text), this,
                                          [this, slot = entry.slot] { applyToFocus(slot); });
        action->setShortcut(entry.key);
        action->setShortcutContext(Qt::WidgetShortcut);
    }
}

void MainWindow::applyToFocus(const char *slot)
{
    QWidget *focus = focusWidget();
    if (focus && focus->metaObject()->indexOfSlot((QByteArray(slot) + "()").constData()) >= 0)
        QMetaObject::invokeMethod(focus, slot);
}

void MainWindow::addConversationMenu()
{
    QMenu *menu = menuBar()->addMenu(u"&Conversation"_s);
    QAction *compose = menu->addAction(u"New Conversation"_s, &m_model, &AppModel::newConversation);
    compose->setShortcut(QKeySequence::New);
    QMenu *conversations = menu->addMenu(u"Conversations"_s);
    connect(conversations, &QMenu::aboutToShow, this,
            [this, conversations] { fillConversations(conversations); });
    menu->addSeparator();
    QAction *stop = menu->addAction(u"Stop Generating"_s, &m_model, &AppModel::cancel);
    stop->setShortcut(Qt::Key_Escape);
    stop->setEnabled(false);
    // While a sheet asks something, Escape belongs to it.
    const auto update = [this, stop] {
        stop->setEnabled(m_model.isBusy() && !m_model.gate().pendingToolCall() &&
                         !m_model.questions().pendingQuestion());
    };
    connect(&m_model, &AppModel::isBusyChanged, stop, update);
    connect(&m_model.gate(), &ApprovalGate::pendingToolCallChanged, stop, update);
    connect(&m_model.questions(), &Questions::pendingQuestionChanged, stop, update);
}

void MainWindow::fillConversations(QMenu *menu)
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
        menu->addAction(fontMetrics().elidedText(title, Qt::ElideRight, standardSize.width() / 2), this,
                        [this, id = meta.id] { m_model.openConversation(id); });
    }
}

void MainWindow::showSettings()
{
    if (!m_settings) {
        m_settings =
            new SettingsView(m_services.settings, m_model.localModel(), m_services.toolServers, this);
        m_settings->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_settings->show();
    m_settings->raise();
    m_settings->activateWindow();
}

void MainWindow::showAbout()
{
    auto *box = new QMessageBox(QMessageBox::NoIcon, u"About Morvane"_s,
                                u"Morvane %1\n\nA desktop AI agent for one person on one computer."_s.arg(
                                    QApplication::applicationVersion()),
                                QMessageBox::Close, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIconPixmap(windowIcon().pixmap(64, 64));
    box->open();
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

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && !isActiveWindow())
        m_model.saveCurrentConversation();
}

} // namespace morvane
