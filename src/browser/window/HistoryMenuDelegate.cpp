#include "browser/window/HistoryMenuDelegate.h"

#include "browser/pages/PageText.h"
#include "browser/window/BrowserMenuActions.h"
#include "browser/window/BrowsingRecords.h"

#include <QMenu>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr qsizetype mostEntries = 10;
/// In characters of the font.
constexpr int widestTitle = 50;

} // namespace

HistoryMenuDelegate::HistoryMenuDelegate(QMenu &menu, const BrowsingRecords &records,
                                         BrowserMenuActions &actions)
    : QObject(&menu), m_menu(menu), m_records(records), m_actions(actions), m_head(menu.actions().size())
{
    connect(&menu, &QMenu::aboutToShow, this, &HistoryMenuDelegate::menuWillOpen);
}

void HistoryMenuDelegate::menuWillOpen()
{
    const QList<QAction *> actions = m_menu.actions();
    for (QAction *action : actions.sliced(m_head)) {
        m_menu.removeAction(action);
        action->deleteLater();
    }
    const QList<BrowserHistoryEntry> newest =
        m_records.history().entries().first(std::min(mostEntries, m_records.history().entries().size()));
    if (newest.isEmpty())
        return;
    m_menu.addSeparator();
    for (const BrowserHistoryEntry &entry : newest) {
        QString title =
            m_menu.fontMetrics().elidedText(pageName(entry.title, entry.host), Qt::ElideRight,
                                            m_menu.fontMetrics().averageCharWidth() * widestTitle);
        m_menu.addAction(title.replace(u'&', u"&&"_s), this,
                         [this, url = entry.url] { m_actions.open(url); });
    }
}

} // namespace morvane
