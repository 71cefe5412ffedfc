#pragma once

#include <QObject>

class QMenu;

namespace morvane {

class BrowserMenuActions;
class BrowsingRecords;

/// Adds the newest pages of the history to the "History" menu whenever it opens.
class HistoryMenuDelegate : public QObject {
    Q_OBJECT
public:
    /// Belongs to `menu`, whose items at the time are its head; the others outlive it.
    HistoryMenuDelegate(QMenu &menu, const BrowsingRecords &records, BrowserMenuActions &actions);

    /// Replaces what stands behind the head.
    void menuWillOpen();

private:
    QMenu &m_menu;
    const BrowsingRecords &m_records;
    BrowserMenuActions &m_actions;
    const qsizetype m_head;
};

} // namespace morvane
