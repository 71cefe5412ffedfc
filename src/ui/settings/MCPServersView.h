#pragma once

#include <QList>
#include <QWidget>

class QPushButton;
class QVBoxLayout;

namespace morvane {

class AddMCPServerView;
class Announcer;
class MCPManager;
class MCPServerRow;
struct MCPServerConfig;

/// The user's tool servers and how they are doing, with what adds, switches and removes them. Looks after all
/// servers when it appears.
class MCPServersView : public QWidget {
    Q_OBJECT
public:
    /// `manager` and `announcer` must outlive the view. The form for a new server opens as a sheet over
    /// `window`. What becomes of a connecting that the user has asked for is announced.
    MCPServersView(MCPManager &manager, Announcer &announcer, QWidget *window);

protected:
    void showEvent(QShowEvent *event) override;

private:
    QWidget *makeHeader();
    QWidget *makeEmptyState();
    void updateRows();
    MCPServerRow *rowOf(QUuid id) const;
    MCPServerRow *newRow(const MCPServerConfig &server);
    void reconnect();

    MCPManager &m_manager;
    Announcer &m_announcer;
    AddMCPServerView *m_form;
    QPushButton *m_add;
    QWidget *m_empty;
    QVBoxLayout *m_rowLayout;
    QList<MCPServerRow *> m_rows;
};

} // namespace morvane
