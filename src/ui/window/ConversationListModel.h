#pragma once

#include "model/ConversationMeta.h"

#include <QAbstractListModel>
#include <QList>

namespace morvane {

class Conversations;

/// The saved conversations as the sidebar's list shows them. A change of one row is told as that.
class ConversationListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum ConversationRole { detailRole = Qt::UserRole + 1 };

    /// `conversations` must outlive the model.
    explicit ConversationListModel(const Conversations &conversations, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    /// DisplayRole is the title, detailRole date and count, AccessibleTextRole what a screen reader says.
    QVariant data(const QModelIndex &index, int role) const override;

    const ConversationMeta &conversation(int row) const { return m_shown.at(row); }
    /// Row of the open conversation, or -1.
    int currentRow() const;

private:
    void takeInserted(qsizetype first, qsizetype last);
    void takeRemoved(qsizetype first, qsizetype last);
    void takeMoved(qsizetype from, qsizetype to);
    void takeChanged(qsizetype row);

    const Conversations &m_conversations;
    QList<ConversationMeta> m_shown; ///< As the views know it, while they are told of a change.
};

} // namespace morvane
