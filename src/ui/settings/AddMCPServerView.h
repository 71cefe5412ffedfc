#pragma once

#include "mcp/NewServerForm.h"
#include "ui/sheets/Sheet.h"

class QLineEdit;

namespace morvane {

class MCPManager;
class SegmentedPicker;
class WrappingButton;

/// The form that adds a tool server, as a sheet over the settings window.
class AddMCPServerView : public Sheet {
    Q_OBJECT
public:
    /// `manager` must outlive the form. Closed at first.
    AddMCPServerView(MCPManager &manager, QWidget *window);

    /// Shows the empty form with the focus on the name.
    void open();

Q_SIGNALS:
    /// The server is in the list, and is to be connected.
    void added(QUuid id);

protected:
    void returnPressed() override;
    void escapePressed() override;

private:
    QWidget *makeLocalPart();
    QWidget *makeRemotePart();
    NewServerForm form() const;
    void refresh();
    void save();

    MCPManager &m_manager;
    QLineEdit *m_name;
    SegmentedPicker *m_transport;
    QLineEdit *m_command;
    QLineEdit *m_args;
    QLineEdit *m_url;
    QWidget *m_local;
    QWidget *m_remote;
    WrappingButton *m_add;
};

} // namespace morvane
