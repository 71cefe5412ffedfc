#pragma once

#include "mcp/MCPServerConfig.h"
#include "ui/settings/ButtonsBeside.h"

class QPushButton;

namespace morvane {

class MCPManager;
class QuietText;
class WrappingCheckBox;

/// One tool server: its name with the switch, what it is, and how it is doing. Assistive technology finds one
/// element that tells name, status and the switch's state, and the buttons.
class MCPServerRow : public ButtonsBeside {
    Q_OBJECT
public:
    /// `manager` must outlive the row.
    MCPServerRow(const MCPServerConfig &server, MCPManager &manager, QWidget *parent = nullptr);

    QUuid server() const { return m_id; }
    QPushButton *removeButton() const { return m_remove; }
    /// Shows the server as it is now.
    void refresh();
    /// The user waits for the end of the next connecting, which outcome() then tells.
    void awaitOutcome() { m_isAwaited = true; }
    /// Shows the new status, and tells it if it is what the user waits for.
    void takeNewStatus();

Q_SIGNALS:
    /// The server that the user waits for is connected, or could not be; told once, in the row's words.
    void outcome(const QString &text);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void copyStatus();

    const QUuid m_id;
    const QString m_name;
    MCPManager &m_manager;
    WrappingCheckBox *m_switch;
    QuietText *m_status;
    QPushButton *m_copy;
    QPushButton *m_remove;
    bool m_isAwaited = false;
};

} // namespace morvane
