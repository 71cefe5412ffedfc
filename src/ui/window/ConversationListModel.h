#pragma once

#include <QAbstractListModel>

namespace morvane {

class AppModel;
struct ConversationMeta;

/// The saved conversations as the sidebar's list shows them.
class ConversationListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum ConversationRole { detailRole = Qt::UserRole + 1 };

    explicit ConversationListModel(AppModel &model, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    /// DisplayRole is the title, detailRole date and count, AccessibleTextRole what a screen reader says.
    QVariant data(const QModelIndex &index, int role) const override;

    const ConversationMeta &conversation(int row) const;
    /// Row of the open conversation, or -1.
    int currentRow() const;

private:
    AppModel &m_model;
};

} // namespace morvane
