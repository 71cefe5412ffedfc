#include "browser/window/BrowserMenuActions.h"

#include "browser/tabs/BrowserManager.h"
#include "browser/window/BrowsingRecords.h"
#include "platform/Announcer.h"
#include "platform/UrlOpener.h"
#include "ui/window/AboutBox.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr double zoomStep = 0.25;

} // namespace

BrowserMenuActions::BrowserMenuActions(BrowserManager &manager, const BrowserWindowServices &services,
                                       QWidget &window)
    : QObject(&window), m_manager(manager), m_services(services), m_window(window)
{
}

void BrowserMenuActions::open(const QString &text)
{
    m_manager.operations().open(text);
}

void BrowserMenuActions::newTab()
{
    m_manager.newTab();
}

void BrowserMenuActions::closeTab()
{
    m_manager.closeTab(m_manager.activeTabID());
}

void BrowserMenuActions::closeWindow()
{
    m_window.close();
}

void BrowserMenuActions::share()
{
    m_manager.shareCurrentPage();
}

void BrowserMenuActions::find()
{
    Q_EMIT toggleFindRequested();
}

void BrowserMenuActions::reload()
{
    const BrowserTab *tab = m_manager.activeTab();
    if (!tab)
        return;
    tab->webView().reload();
    m_services.announcer.announce(u"Reloading page."_s);
}

void BrowserMenuActions::zoomReset()
{
    m_manager.setZoom(1.0);
}

void BrowserMenuActions::zoomIn()
{
    const BrowserTab *tab = m_manager.activeTab();
    m_manager.setZoom((tab ? tab->zoom() : 1.0) + zoomStep);
}

void BrowserMenuActions::zoomOut()
{
    const BrowserTab *tab = m_manager.activeTab();
    m_manager.setZoom((tab ? tab->zoom() : 1.0) - zoomStep);
}

void BrowserMenuActions::toggleFullScreen()
{
    m_window.setWindowState(m_window.windowState() ^ Qt::WindowFullScreen);
}

void BrowserMenuActions::goBack()
{
    // What is shown follows once the page has come; a second press may find none to go back to.
    const BrowserTab *tab = m_manager.activeTab();
    if (!tab || !tab->webView().canGoBack())
        return;
    tab->webView().goBack();
    m_services.announcer.announce(u"Going back."_s);
}

void BrowserMenuActions::goForward()
{
    const BrowserTab *tab = m_manager.activeTab();
    if (!tab || !tab->webView().canGoForward())
        return;
    tab->webView().goForward();
    m_services.announcer.announce(u"Going forward."_s);
}

void BrowserMenuActions::reopenClosedTab()
{
    m_manager.reopenClosedTab();
}

void BrowserMenuActions::showHistory()
{
    Q_EMIT showHistoryRequested();
}

void BrowserMenuActions::confirmClearHistory()
{
    confirm(u"Clear History?"_s,
            u"This will remove your browsing history (90 days, up to 2000 entries). This cannot be undone."_s,
            u"Clear History"_s, &BrowsingRecords::clearHistory);
}

void BrowserMenuActions::confirmClearBrowsingData()
{
    confirm(u"Clear Browsing Data?"_s,
            u"This will clear history, cookies, cache, and site data. Bookmarks will also be removed. This "
            "cannot be undone."_s,
            u"Clear Data"_s, &BrowsingRecords::clearBrowsingData);
}

void BrowserMenuActions::confirm(const QString &message, const QString &information, const QString &button,
                                 void (BrowsingRecords::*action)())
{
    // A sheet of the window, such as the history, may be what asks.
    QWidget *sheet = QApplication::activeModalWidget();
    auto *box = new QMessageBox(sheet && sheet->parentWidget() == &m_window ? sheet : &m_window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(message);
    box->setText(message);
    box->setInformativeText(information);
    auto *clear = box->addButton(button, QMessageBox::AcceptRole);
    // A Return too many must not clear what cannot be brought back.
    box->setDefaultButton(box->addButton(QMessageBox::Cancel));
    connect(clear, &QPushButton::clicked, this, [this, action] { (m_services.records.*action)(); });
    box->open();
}

void BrowserMenuActions::addBookmarkForActiveTab()
{
    m_services.records.addBookmarkForActiveTab(m_manager);
}

void BrowserMenuActions::hideProgram()
{
    for (QWidget *window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowType() == Qt::Window)
            window->showMinimized();
}

void BrowserMenuActions::minimize()
{
    m_window.showMinimized();
}

void BrowserMenuActions::showAbout()
{
    showAboutBox(m_window, u"About Morvane Browser"_s);
}

void BrowserMenuActions::showHelp()
{
    if (!m_services.urls.openOwnPage(m_services.documentation))
        m_services.announcer.announce(u"The documentation could not be opened."_s);
}

} // namespace morvane
