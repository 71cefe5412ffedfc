#pragma once

#include <QList>
#include <QWidget>

class QPushButton;
class QVBoxLayout;

namespace morvane {

class AddMCPServerView;
class MCPManager;
class MCPServerRow;

/// The user's tool servers and how they are doing, with what adds, switches and removes them. Looks after all
/// servers when it appears.
class MCPServersView : public QWidget {
    Q_OBJECT
public:
    /// `manager` must outlive the view. The form for a new server opens as a sheet over `window`.
    MCPServersView(MCPManager &manager, QWidget *window);

protected:
    void showEvent(QShowEvent *event) override;

private:
    QWidget *makeHeader();
    QWidget *makeEmptyState();
    void updateRows();
    void updateRow(QUuid id);

    MCPManager &m_manager;
    AddMCPServerView *m_form;
    QPushButton *m_add;
    QWidget *m_empty;
    QVBoxLayout *m_rowLayout;
    QList<MCPServerRow *> m_rows;
};

} // namespace morvane
