#pragma once

#include <QListView>

namespace morvane {

/// The rows of the sidebar. Assistive technology finds each as an element that offers to open its
/// conversation.
class ConversationList : public QListView {
    Q_OBJECT
public:
    explicit ConversationList(QWidget *parent = nullptr);

Q_SIGNALS:
    /// Assistive technology wants to open a row.
    void openRequested(const QModelIndex &row);
};

} // namespace morvane
