#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QListView;
class QModelIndex;

namespace morvane {

class BrowserMenuActions;
class BrowsingRecords;
class HistoryListModel;

/// The history, day by day, to filter, to open and to clear. Holds the browser's window.
class HistorySheet : public QDialog {
    Q_OBJECT
public:
    /// Both outlive the sheet.
    HistorySheet(BrowsingRecords &records, BrowserMenuActions &actions, QWidget *parent);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void update();
    void openRow(const QModelIndex &index);
    void deleteRow(const QModelIndex &index);
    void openMenu(const QPoint &position);

    BrowsingRecords &m_records;
    BrowserMenuActions &m_actions;
    HistoryListModel *m_rows;
    QLineEdit *m_query;
    QLabel *m_results;
    QListView *m_list;
};

} // namespace morvane
