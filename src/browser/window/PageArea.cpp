#include "browser/window/PageArea.h"

#include "browser/pages/PageText.h"
#include "browser/tabs/BrowserManager.h"
#include "ui/controls/AccessibleEvents.h"
#include "ui/controls/AccessibleRole.h"

#include <QHash>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr QSize smallestPage{120, 80};

} // namespace

PageArea::PageArea(BrowserManager &manager, const std::function<bool()> &isHeard, QWidget *parent)
    : QStackedWidget(parent), m_manager(manager),
      m_coming([this, isHeard] { return isHeard() && isActiveWindow() && hasPageFocus(); },
               ComingDocument::usualPause, this)
{
    setAccessibleRole(this, QAccessible::Grouping);
    setMinimumSize(smallestPage);
    connect(&manager, &BrowserManager::activeTabChanged, this, &PageArea::showActiveTab);
    connect(&m_coming, &ComingDocument::found, this, &tellFocusAnew);
    showActiveTab();
}

PageArea::~PageArea()
{
    while (QWidget *view = widget(0)) {
        removeWidget(view);
        view->removeEventFilter(this);
        view->setParent(nullptr);
    }
}

void PageArea::showActiveTab()
{
    if (m_tab) {
        m_tab->disconnect(this);
        m_tab->webView().disconnect(&m_coming);
    }
    m_coming.forget();
    m_tab = m_manager.activeTab();
    if (!m_tab)
        return;
    connect(m_tab, &BrowserTab::changed, this, &PageArea::updateName);
    connect(&m_tab->webView(), &WebPage::navigationStarted, &m_coming, &ComingDocument::begun);
    connect(&m_tab->webView(), &WebPage::committed, &m_coming, &ComingDocument::replaced);
    connect(&m_tab->webView(), &WebPage::finished, &m_coming, &ComingDocument::loaded);
    connect(&m_tab->webView(), &WebPage::failed, &m_coming, &ComingDocument::loaded);
    QWidget *view = m_tab->webView().view();
    const bool hadFocus = hasPageFocus();
    if (indexOf(view) < 0) {
        addWidget(view);
        view->installEventFilter(this);
    }
    setCurrentWidget(view);
    if (hadFocus)
        focusPage();
    updateName();
}

void PageArea::updateName()
{
    const QString title = pageText(m_tab->title());
    const QString name = title.isEmpty() ? u"Browser content"_s : u"Browser content: "_s + title;
    if (accessibleName() != name)
        setAccessibleName(name);
}

void PageArea::focusPage()
{
    if (QWidget *view = currentWidget())
        view->setFocus(Qt::OtherFocusReason);
}

void PageArea::focusComingPage()
{
    const AccessibleSilence silence(this);
    focusPage();
}

void PageArea::edit(const QByteArray &slot)
{
    static const QHash<QByteArray, EditCommand> commands{
        {"undo", EditCommand::undo}, {"redo", EditCommand::redo},   {"cut", EditCommand::cut},
        {"copy", EditCommand::copy}, {"paste", EditCommand::paste}, {"selectAll", EditCommand::selectAll}};
    if (m_tab && commands.contains(slot))
        m_tab->webView().edit(commands.value(slot));
}

bool PageArea::eventFilter(QObject *watched, QEvent *event)
{
    // A site that another process shows comes in another widget, and the keyboard goes with the one before.
    if (event->type() == QEvent::ChildRemoved)
        QMetaObject::invokeMethod(this, &PageArea::keepFocus, Qt::QueuedConnection);
    return QStackedWidget::eventFilter(watched, event);
}

void PageArea::keepFocus()
{
    if (!window()->focusWidget())
        focusPage();
}

bool PageArea::hasPageFocus() const
{
    return isAncestorOf(window()->focusWidget());
}

} // namespace morvane
