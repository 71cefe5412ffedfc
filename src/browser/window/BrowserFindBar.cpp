#include "browser/window/BrowserFindBar.h"

#include "browser/tabs/BrowserManager.h"
#include "browser/window/SelectingTextField.h"
#include "browser/window/ToolButton.h"
#include "platform/Announcer.h"
#include "ui/controls/AccessibleRole.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr int longestQuery = 500;

} // namespace

BrowserFindBar::BrowserFindBar(BrowserManager &manager, Scheduler &scheduler, Announcer &announcer,
                               QWidget *parent)
    : QWidget(parent), m_manager(manager), m_announcer(announcer),
      m_finder(new PageFinder(scheduler, announcer, this)), m_query(new SelectingTextField),
      m_count(new QLabel)
{
    setAccessibleRole(this, QAccessible::ToolBar);
    setAccessibleName(u"Find bar"_s);
    m_query->setPlaceholderText(u"Find in page"_s);
    m_query->setAccessibleName(u"Find in page"_s);
    m_query->setAccessibleDescription(u"Type to search within the page"_s);
    m_query->setObjectName(u"findQuery"_s);
    m_query->setMaxLength(longestQuery);
    m_count->setTextFormat(Qt::PlainText);
    m_count->setForegroundRole(QPalette::PlaceholderText);
    auto *previous = toolButton(Symbol::chevronUp, u"Previous match"_s, u"Go to the previous match"_s);
    auto *next = toolButton(Symbol::chevronDown, u"Next match"_s, u"Go to the next match"_s);
    auto *closing = toolButton(Symbol::cross, u"Close find bar"_s);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 2, 8, 6);
    row->addWidget(m_query, 1);
    row->addWidget(m_count);
    for (QToolButton *button : {previous, next, closing}) {
        row->addWidget(button);
        button->installEventFilter(this);
    }
    m_query->installEventFilter(this);

    connect(m_query, &QLineEdit::textChanged, this, &BrowserFindBar::count);
    connect(m_finder, &PageFinder::counted, this, [this] {
        m_count->setText(m_finder->count() == 1 ? u"1 match"_s : u"%1 matches"_s.arg(m_finder->count()));
    });
    connect(previous, &QToolButton::clicked, this, [this] { step(PageFinder::Direction::backwards); });
    connect(next, &QToolButton::clicked, this, [this] { step(PageFinder::Direction::forwards); });
    connect(closing, &QToolButton::clicked, this, &BrowserFindBar::close);
    connect(&manager, &BrowserManager::activeTabChanged, this, &BrowserFindBar::followPage);
    hide();
    followPage();
}

QPointer<WebPage> BrowserFindBar::page() const
{
    const BrowserTab *tab = m_manager.activeTab();
    return tab ? &tab->webView() : nullptr;
}

void BrowserFindBar::followPage()
{
    if (m_followed)
        m_followed->disconnect(this);
    m_followed = page();
    if (m_followed)
        connect(m_followed, &WebPage::finished, this, &BrowserFindBar::count);
    count();
}

void BrowserFindBar::toggle()
{
    if (isVisible() && isAncestorOf(window()->focusWidget()))
        close();
    else
        open();
}

void BrowserFindBar::open()
{
    const bool wasOpen = isVisible();
    show();
    m_query->setFocus(Qt::ShortcutFocusReason);
    if (wasOpen)
        return;
    count();
    m_announcer.announce(u"Find bar opened"_s);
}

void BrowserFindBar::close()
{
    // What is hidden under the keyboard would hand it to the next field, which may be one of the page.
    if (isAncestorOf(window()->focusWidget()))
        Q_EMIT focusLeft();
    hide();
    m_announcer.announce(u"Find bar closed"_s);
}

void BrowserFindBar::count()
{
    if (isVisible())
        m_finder->setQuery(m_query->text(), page());
}

void BrowserFindBar::step(PageFinder::Direction direction)
{
    m_finder->findNext(page(), direction);
}

bool BrowserFindBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::ShortcutOverride)
        return QWidget::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    const bool isEscape = key->key() == Qt::Key_Escape;
    const bool isReturn = watched == m_query && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter);
    if (!isEscape && !isReturn)
        return QWidget::eventFilter(watched, event);
    event->accept();
    if (event->type() == QEvent::ShortcutOverride)
        return true;
    if (isEscape)
        close();
    else
        step(key->modifiers().testFlag(Qt::ShiftModifier) ? PageFinder::Direction::backwards
                                                          : PageFinder::Direction::forwards);
    return true;
}

} // namespace morvane
