#pragma once

#include <QPersistentModelIndex>
#include <QWidget>

class QKeyEvent;
class QLabel;
class QModelIndex;
class QToolButton;

namespace morvane {

class AppModel;
class ConversationList;
class ConversationListModel;

/// The sidebar: the saved conversations, to open and to delete. The selected row is the open conversation,
/// the current one that of the keyboard. One real button for deleting stands on the row that the keyboard or
/// the pointer is on, so that a list of thousands stays cheap.
class ConversationListView : public QWidget {
    Q_OBJECT
public:
    explicit ConversationListView(AppModel &model, QWidget *parent = nullptr);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

Q_SIGNALS:
    /// The user has chosen a conversation with the mouse, and goes on elsewhere.
    void openedByMouse();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void openRow(const QModelIndex &index);
    void deleteRow(const QModelIndex &index);
    void openMenu(const QPoint &position);
    /// Puts the button on a row; without one, on that of the open conversation.
    void moveButton(const QModelIndex &wanted);
    void moveButtonToPointer(const QModelIndex &row);
    void keepButton();
    /// Whether the key was the list's.
    bool takeKey(const QKeyEvent &key);
    void takeFocus();
    void leaveFocus(Qt::FocusReason reason);
    void takeInserted();
    void takeRemoved();
    void showListOrNote();
    void selectOpenConversation();

    AppModel &m_model;
    ConversationListModel *m_rows;
    ConversationList *m_list;
    QLabel *m_empty;
    QToolButton *m_delete;
    QPersistentModelIndex m_buttonRow; ///< What the button deletes, wherever the row goes.
};

} // namespace morvane
