#include "browser/window/BrowserTabBar.h"

#include "browser/tabs/BrowserManager.h"
#include "browser/window/BrowserTabButton.h"
#include "browser/window/ScrollStrip.h"
#include "browser/window/ToolButton.h"
#include "platform/Announcer.h"
#include "ui/controls/AccessibleRole.h"

#include <QHBoxLayout>
#include <QToolButton>
#include <algorithm>

using namespace Qt::StringLiterals;

namespace morvane {

BrowserTabBar::BrowserTabBar(BrowserManager &manager, Announcer &announcer, QWidget *parent)
    : QWidget(parent), m_manager(manager), m_announcer(announcer), m_strip(new ScrollStrip),
      m_new(toolButton(Symbol::plus, u"New browser tab"_s, u"Open a new tab"_s))
{
    setAccessibleRole(m_strip->widget(), QAccessible::PageTabList);
    m_strip->widget()->setAccessibleName(u"Browser tabs"_s);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 6, 8, 2);
    row->setSpacing(4);
    row->addWidget(m_strip, 1);
    row->addWidget(m_new, 0, Qt::AlignTop);
    m_strip->row()->addStretch(1);

    connect(m_new, &QToolButton::clicked, &manager, &BrowserManager::newTab);
    connect(&manager, &BrowserManager::tabInserted, this, &BrowserTabBar::insert);
    connect(&manager, &BrowserManager::tabRemoved, this, &BrowserTabBar::remove);
    connect(&manager, &BrowserManager::tabMoved, this, &BrowserTabBar::move);
    connect(&manager, &BrowserManager::activeTabChanged, this, &BrowserTabBar::followActiveTab);
    for (qsizetype index = 0; index < std::ssize(manager.tabs()); ++index)
        insert(index);
    followActiveTab();
}

void BrowserTabBar::insert(qsizetype index)
{
    const QUuid id = m_manager.tabs().at(static_cast<std::size_t>(index))->id();
    auto *button = new BrowserTabButton(*m_manager.tabs().at(static_cast<std::size_t>(index)));
    connect(button, &BrowserTabButton::clicked, this, [this, id] {
        if (m_manager.activeTabID() != id)
            m_manager.switchTab(id);
    });
    // The button goes with the tab, and is still at work when it asks for that.
    connect(
        button, &BrowserTabButton::closeRequested, this, [this, id] { m_manager.closeTab(id); },
        Qt::QueuedConnection);
    connect(button, &BrowserTabButton::dragged, this, [this, button](int x) { drag(button, x); });
    connect(button, &BrowserTabButton::focusMoveRequested, this,
            [this, button](int step) { moveFocus(button, step); });
    connect(button, &BrowserTabButton::placeMoveRequested, this,
            [this, button](int step) { movePlace(button, step); });
    m_buttons.insert(index, button);
    m_strip->row()->insertWidget(static_cast<int>(index), button, 100);
    followActiveTab();
}

void BrowserTabBar::remove(qsizetype index)
{
    BrowserTabButton *button = m_buttons.takeAt(index);
    const bool hadFocus = button->hasFocus();
    delete button;
    if (hadFocus && !m_buttons.isEmpty())
        m_buttons.at(std::min(index, m_buttons.size() - 1))->setFocus(Qt::OtherFocusReason);
}

void BrowserTabBar::move(qsizetype from, qsizetype to)
{
    m_buttons.move(from, to);
    QWidget *button = m_buttons.at(to);
    // Assistive technology finds them in the order in which they lie upon each other.
    if (to + 1 < m_buttons.size())
        button->stackUnder(m_buttons.at(to + 1));
    else
        button->raise();
    m_strip->row()->removeWidget(button);
    m_strip->row()->insertWidget(static_cast<int>(to), button, 100);
}

BrowserTabButton *BrowserTabBar::activeButton() const
{
    const auto found =
        std::find_if(m_buttons.cbegin(), m_buttons.cend(), [this](const BrowserTabButton *button) {
            return button->id() == m_manager.activeTabID();
        });
    return found == m_buttons.cend() ? nullptr : *found;
}

void BrowserTabBar::followActiveTab()
{
    BrowserTabButton *active = activeButton();
    for (BrowserTabButton *button : m_buttons)
        button->setActive(button == active);
    if (!active)
        return;
    stopTabKeyAt(active);
    m_strip->bringIntoSight(active);
}

void BrowserTabBar::stopTabKeyAt(const BrowserTabButton *wanted)
{
    for (BrowserTabButton *button : m_buttons)
        button->setTabStop(button == wanted);
}

void BrowserTabBar::takeFocus()
{
    if (BrowserTabButton *active = activeButton())
        active->setFocus(Qt::TabFocusReason);
}

void BrowserTabBar::drag(BrowserTabButton *button, int x)
{
    m_strip->ensureVisible(x, 0, button->height(), 0);
    const qsizetype from = m_buttons.indexOf(button);
    const auto isBeyond = [x](const BrowserTabButton *other) { return x > other->geometry().center().x(); };
    // Only past the middle of another tab, so that tabs of different widths do not change places for ever.
    qsizetype to = from;
    while (to + 1 < m_buttons.size() && isBeyond(m_buttons.at(to + 1)))
        ++to;
    while (to > 0 && to <= from && !isBeyond(m_buttons.at(to - 1)))
        --to;
    if (to == from)
        return;
    m_manager.moveTab(from, to);
    m_strip->row()->activate();
}

void BrowserTabBar::movePlace(BrowserTabButton *button, int step)
{
    const qsizetype from = m_buttons.indexOf(button);
    const qsizetype to = std::clamp<qsizetype>(from + step, 0, m_buttons.size() - 1);
    if (to == from)
        return;
    m_manager.moveTab(from, to);
    m_strip->bringIntoSight(button);
    m_announcer.announce(u"Moved tab %1 to place %2 of %3"_s.arg(button->text(), QString::number(to + 1),
                                                                 QString::number(m_buttons.size())));
}

void BrowserTabBar::moveFocus(const BrowserTabButton *button, int step)
{
    const qsizetype from = m_buttons.indexOf(button);
    const qsizetype to = std::clamp<qsizetype>(from + step, 0, m_buttons.size() - 1);
    stopTabKeyAt(m_buttons.at(to));
    m_buttons.at(to)->setFocus(Qt::TabFocusReason);
    m_strip->bringIntoSight(m_buttons.at(to));
}

} // namespace morvane
