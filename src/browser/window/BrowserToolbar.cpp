#include "browser/window/BrowserToolbar.h"

#include "browser/tabs/BrowserManager.h"
#include "browser/window/BrowserMenuActions.h"
#include "browser/window/ToolButton.h"
#include "browser/window/URLField.h"
#include "ui/controls/AccessibleRole.h"
#include "ui/controls/EnabledOnceLeft.h"

#include <QHBoxLayout>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

BrowserToolbar::BrowserToolbar(BrowserManager &manager, BrowserMenuActions &actions, QWidget *parent)
    : QWidget(parent), m_manager(manager),
      m_back(toolButton(Symbol::arrowLeft, u"Go back"_s, u"Go to the previous page"_s)),
      m_forward(toolButton(Symbol::arrowRight, u"Go forward"_s, u"Go to the next page"_s)),
      m_bookmark(toolButton(Symbol::bookmark, u"Bookmark this page"_s)), m_address(new URLField)
{
    setAccessibleRole(this, QAccessible::ToolBar);
    auto *reload = toolButton(Symbol::arrowClockwise, u"Reload this page"_s);
    auto *share = toolButton(Symbol::share, u"Share this page"_s, u"Open the share menu for this page"_s);
    auto *history = toolButton(Symbol::clock, u"Show history"_s, u"Open browsing history"_s);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 4, 8, 6);
    row->setSpacing(4);
    for (QToolButton *button : {m_back, m_forward, reload})
        row->addWidget(button);
    row->addWidget(m_address, 1);
    for (QToolButton *button : {m_bookmark, share, history})
        row->addWidget(button);

    connect(m_back, &QToolButton::clicked, &actions, &BrowserMenuActions::goBack);
    connect(m_forward, &QToolButton::clicked, &actions, &BrowserMenuActions::goForward);
    connect(reload, &QToolButton::clicked, &actions, &BrowserMenuActions::reload);
    connect(m_bookmark, &QToolButton::clicked, &actions, &BrowserMenuActions::addBookmarkForActiveTab);
    connect(share, &QToolButton::clicked, &actions, &BrowserMenuActions::share);
    connect(history, &QToolButton::clicked, &actions, &BrowserMenuActions::showHistory);
    connect(m_address, &URLField::entered, this, [this, &actions](const QString &text) {
        actions.open(text);
        Q_EMIT comingPageWanted();
    });
    connect(m_address, &URLField::left, this, &BrowserToolbar::pageWanted);
    connect(&manager, &BrowserManager::toolbarStateChanged, this, &BrowserToolbar::update);
    connect(&manager, &BrowserManager::activeTabChanged, this, &BrowserToolbar::update);
    update();
}

void BrowserToolbar::update()
{
    setEnabledOnceLeft(m_back, m_manager.canGoBack());
    setEnabledOnceLeft(m_forward, m_manager.canGoForward());
    setEnabledOnceLeft(m_bookmark, !m_manager.currentURLString().isEmpty());
    m_address->showAddress(m_manager.currentURLString());
}

void BrowserToolbar::focusAddress()
{
    m_address->setFocus(Qt::ShortcutFocusReason);
}

} // namespace morvane
